#include "inspect/read/input.h"

#include <google/protobuf/io/coded_stream.h>

#include <iostream>

#include "inspect/error.h"
#include "inspect/read/capture.h"
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
  constexpr std::size_t kBlock = 1U << 16U;
  for (std::size_t count = 1; count != 0;) {
    const std::size_t size = text.size();
    text.resize(size + kBlock);
    count = stream.Read(&text[size], kBlock);
    text.resize(size + count);
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
  if (FormOf(stream) == CaptureForm::kNoCapture) return;
  throw Error(stream.name() + ": a capture, whose messages the command log shows");
}

void Note(const std::string& text) {
  std::cerr << "virtual-modem-inspect: " << ForTerminal(text) << '\n';
}

std::string DisplayName(const std::string& path) { return path == "-" ? "standard input" : path; }

bool DelimitedReader::Next() {
  const void* ahead = nullptr;
  int count = 0;
  if (!blocks_.Next(&ahead, &count)) return false;
  blocks_.BackUp(count);
  google::protobuf::io::CodedInputStream in(&blocks_);
  if (!in.ReadVarint64(&size_) || size_ > kMaxMessageBytes) {
    throw Error(stream_.name() + ": no length of a message at byte " + std::to_string(taken_) +
                " (is this a stream of delimited messages?)");
  }
  offset_ = taken_ + in.CurrentPosition();
  in.ReadString(&bytes_, static_cast<int>(size_));  // or what there is of it
  taken_ = offset_ + static_cast<std::int64_t>(bytes_.size());
  return true;
}

}  // namespace virtual_modem::inspect
