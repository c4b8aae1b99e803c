// Bytes of messages from files, whole or message by message.
#pragma once

#include <cstddef>
#include <optional>
#include <string>

#include "inspect/read/byte_stream.h"
#include "inspect/read/pasted.h"

namespace virtual_modem::inspect {

// A message of a telephony exchange has some hundred bytes; what is larger is something else, and
// parsing it could take a hundred times its size of memory.
constexpr std::size_t kMaxMessageBytes = 16U << 20U;

// What is left of a stream. Throws Error, also when it is too much for one message.
std::string ReadAll(ByteStream& stream);

// Where the bytes of a message come from.
struct Source {
  std::string file = "-";
  Encoding from = Encoding::kAuto;
  std::optional<std::string> hex = {};  // the bytes themselves; a file is not read then
};

// The name of the source in messages for people.
std::string DisplayName(const Source& source);

// The bytes that a source stands for. Reports on standard error what was left out or assumed.
// Errors name the source; more than kMaxMessageBytes are one. as_is, if given, tells
// whether they are what the source holds as it stands.
std::string ReadBytes(const Source& source, bool* as_is = nullptr);

// Throws Error, which names the command to use, when the stream is a capture.
void RefuseCapture(ByteStream& stream);

// Prints one line that is not an error on standard error, with the program's name.
void Note(const std::string& text);

// The name of the input in messages for people.
std::string DisplayName(const std::string& path);

}  // namespace virtual_modem::inspect
