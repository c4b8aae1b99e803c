// The subcommands. Each writes to standard output, throws Error for bad input and returns the exit
// status.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "inspect/input.h"
#include "inspect/schema.h"

namespace virtual_modem::inspect {

// Exit statuses, documented in the manual page.
enum Status : std::uint8_t {
  kOk = 0,
  kBadInput = 1,
  kUsage = 2,
  kDifferent = 3,
};

struct DecodeOptions {
  std::string type;
  std::string file = "-";
  Encoding from = Encoding::kAuto;
  bool json = false;
  bool redact = false;
  bool delimited = false;
};
Status DecodeCommand(Schema& schema, const DecodeOptions& options);

struct EncodeOptions {
  std::string type;
  std::string file = "-";
  Encoding to = Encoding::kAuto;  // kAuto: hex on a terminal, else binary
  bool json = false;
  bool partial = false;
  bool delimited = false;
};
Status EncodeCommand(Schema& schema, const EncodeOptions& options);

struct IdentifyOptions {
  std::string file = "-";
  Encoding from = Encoding::kAuto;
  bool all = false;
};
Status IdentifyCommand(Schema& schema, const IdentifyOptions& options);

// what: a message, an enumeration, a field, a value or a number; empty for the units.
Status DescribeCommand(const Schema& schema, const std::string& what);

// what: "messages" or "enums".
Status ListCommand(const Schema& schema, const std::string& what);

struct DiffOptions {
  std::string type;
  std::string left;
  std::string right;
  Encoding from = Encoding::kAuto;
  bool redact = false;
};
Status DiffCommand(Schema& schema, const DiffOptions& options);

}  // namespace virtual_modem::inspect
