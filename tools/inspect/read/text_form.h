// Messages in the text form within other text: where they end, and what a cut one still tells.
#pragma once

#include <google/protobuf/message.h>

#include <cstddef>
#include <string>
#include <string_view>

namespace virtual_modem::inspect {

struct TextForm {
  std::string text;        // of the whole fields, with the messages closed that a cut left open
  std::size_t fields = 0;  // at every depth
  std::size_t end = 0;     // of them in the text around
  bool whole = false;      // nothing else is in the text
  bool cut = false;        // the text ends, or says that it was cut, within a message
};

// Parses a text into the message, required fields present or not. Returns why it cannot be read,
// empty if it can. lenient takes fields that the type lacks, too.
std::string ParseText(const std::string& text, bool lenient, google::protobuf::Message& message);

// The fields that the text begins with. Looks at no byte twice.
TextForm TakeTextForm(std::string_view text);

}  // namespace virtual_modem::inspect
