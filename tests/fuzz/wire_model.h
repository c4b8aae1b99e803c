// A second, much simpler implementation of what a message class must do with bytes, worked from the
// schema: what the fuzzers compare the generated classes with.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "support/schema.h"

namespace virtual_modem::testing {

struct ModelResult {
  std::string bytes;  // what the message writes after reading the input
  bool initialized;   // every required field is there, in sub-messages too
};

// Reads `input` as a message and writes it again; nothing when the input is malformed.
std::optional<ModelResult> ReadAndWrite(const MessageSchema& schema, std::string_view input);

}  // namespace virtual_modem::testing
