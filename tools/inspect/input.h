// Bytes of messages as people have them: raw, as hex (dumps included) or as base64.
#pragma once

#include <google/protobuf/io/zero_copy_stream.h>
#include <google/protobuf/io/zero_copy_stream_impl.h>

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <utility>

namespace virtual_modem::inspect {

enum class Encoding : std::uint8_t { kAuto, kBinary, kHex, kBase64 };

// A message of a telephony exchange has some hundred bytes; what is larger is something else.
constexpr std::size_t kMaxMessageBytes = 16U << 20U;

// The whole of a file; "-" is standard input. Throws Error, also when there is too much of it.
std::string ReadAll(const std::string& path);

// The bytes that a text stands for. With kAuto: hex when all of it reads as hex, else base64 when
// all of it reads as that, else the bytes themselves; text that is neither is refused.
std::string Decode(std::string_view text, Encoding encoding);

// The bytes that a file stands for. Errors name it.
std::string ReadBytes(const std::string& path, Encoding encoding);

// How the input is called in messages for people.
std::string DisplayName(const std::string& path);

// Messages one after the other, each behind its length as a varint.
class DelimitedReader {
 public:
  // The stream must outlive the reader; errors name it so.
  DelimitedReader(google::protobuf::io::ZeroCopyInputStream& stream, std::string name)
      : stream_(stream), name_(std::move(name)) {}

  // Reads the next message; false at the end of the stream. Throws Error when there is no sensible
  // length. When the stream ends within the message, bytes() is what is there and cut() is true.
  bool Next();

  const std::string& bytes() const { return bytes_; }
  // Where the message begins, behind its length.
  std::int64_t offset() const { return offset_; }
  bool cut() const { return bytes_.size() < size_; }
  std::size_t size() const { return size_; }

 private:
  google::protobuf::io::ZeroCopyInputStream& stream_;
  const std::string name_;
  std::string bytes_;
  std::int64_t offset_ = 0;
  std::size_t size_ = 0;
};

}  // namespace virtual_modem::inspect
