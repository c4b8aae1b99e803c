#include "inspect/read/input.h"

#include <algorithm>
#include <cstring>
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

// Sees to it that so many bytes are in the buffer; false at the end of the stream.
bool DelimitedReader::Fill(std::size_t size) {
  if (end_ - begin_ >= size) return true;
  std::memmove(buffer_.data(), buffer_.data() + begin_, end_ - begin_);
  end_ -= begin_;
  begin_ = 0;
  if (buffer_.size() < size) buffer_.resize(size);
  while (end_ < size) {
    const std::size_t count = stream_.Read(buffer_.data() + end_, buffer_.size() - end_);
    if (count == 0) return false;
    end_ += count;
  }
  return true;
}

bool DelimitedReader::Next() {
  constexpr std::size_t kMaxLengthBytes = 5;
  if (!Fill(1)) return false;
  std::uint64_t size = 0;
  std::size_t length = 0;
  bool ends = false;
  while (!ends && length < kMaxLengthBytes && Fill(length + 1)) {
    const auto byte = static_cast<std::uint8_t>(buffer_[begin_ + length]);
    size |= static_cast<std::uint64_t>(byte & 0x7FU) << (7 * length);
    ends = byte < 0x80;
    ++length;
  }
  if (!ends || size > kMaxMessageBytes) {
    throw Error(stream_.name() + ": no length of a message at byte " + std::to_string(taken_) +
                " (is this a stream of delimited messages?)");
  }
  size_ = static_cast<std::size_t>(size);
  begin_ += length;
  offset_ = taken_ + static_cast<std::int64_t>(length);
  Fill(size_);
  bytes_ = {buffer_.data() + begin_, std::min(size_, end_ - begin_)};
  begin_ += bytes_.size();
  taken_ = offset_ + static_cast<std::int64_t>(bytes_.size());
  return true;
}

}  // namespace virtual_modem::inspect
