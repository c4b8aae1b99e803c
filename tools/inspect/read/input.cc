#include "inspect/read/input.h"

#include <iostream>

#include "inspect/error.h"
#include "inspect/read/recording.h"
#include "inspect/show/terminal.h"

namespace virtual_modem::inspect {
namespace {

// Room for a message of the largest size as a hex dump.
constexpr std::size_t kMaxInputBytes = 6 * kMaxMessageBytes;
constexpr const char* kTooLarge =
    ": over 16 MiB, too large for one message (a stream needs --delimited)";

}  // namespace

std::string ReadAll(ByteStream& stream) {
  std::string text;
  while (stream.AppendTo(text)) {
    if (text.size() > kMaxInputBytes) throw Error(stream.name() + kTooLarge);
  }
  return text;
}

std::string DisplayName(const Source& source) {
  return source.hex ? "--hex" : DisplayName(source.file);
}

std::string ReadBytes(const Source& source, bool* as_is) {
  const std::string name = DisplayName(source);
  if (source.hex && source.hex->empty()) throw Error(name + ": no bytes were given");
  std::string text = source.hex.value_or("");
  if (!source.hex) {
    ByteStream stream(source.file);
    if (source.from == Encoding::kAuto) RefuseCapture(stream);
    text = ReadAll(stream);
  }
  std::string bytes;
  std::string note;
  try {
    bytes = ParsePasted(text, source.hex ? Encoding::kHex : source.from, note);
  } catch (const Error& error) {
    throw Error(name + ": " + error.what());
  }
  if (bytes.size() > kMaxMessageBytes) throw Error(name + kTooLarge);
  if (as_is != nullptr) *as_is = bytes == text;
  if (!note.empty()) Note(name + ": " + note);
  return bytes;
}

void RefuseCapture(ByteStream& stream) {
  if (!ResolutionOf(stream)) return;
  throw Error(stream.name() + ": a capture; use the command log");
}

void Note(const std::string& text) {
  std::cerr << "virtual-modem-inspect: " << ForTerminal(text) << '\n';
}

std::string DisplayName(const std::string& path) { return path == "-" ? "standard input" : path; }

}  // namespace virtual_modem::inspect
