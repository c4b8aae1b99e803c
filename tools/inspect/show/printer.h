// Prints encoded messages as text or JSON.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "inspect/examine/findings.h"
#include "inspect/schema/schema.h"
#include "inspect/show/output.h"

namespace virtual_modem::inspect {

// How to treat bytes that are to be masked and do not fit their type.
enum class Misfit : std::uint8_t {
  kHide,   // nothing is shown
  kShape,  // all strings and lists of numbers are masked
  kTrust,  // they are masked by the type anyway
};

struct PrinterOptions {
  bool json = false;
  bool mask = false;
  Misfit misfit = Misfit::kHide;
  bool single_line = false;
};

class Printer {
 public:
  Printer(Schema& schema, const PrinterOptions& options, Output& out);

  // Appends the message, whose type is an index into the schema's types, and tells what there is to
  // tell. Text of several lines ends with a line break.
  //
  // Bytes as a serializer writes them are printed where they stand; others are parsed first.
  Findings Print(unsigned type, std::string_view bytes);

 private:
  text::Outcome AppendText(unsigned type, std::string_view bytes, bool whatever_comes);

  Schema& schema_;
  const PrinterOptions options_;
  Output& out_;
  std::string masked_;
  std::string json_;
};

}  // namespace virtual_modem::inspect
