// Bytes of messages from files, whole or message by message.
#pragma once

#include <google/protobuf/io/coded_stream.h>
#include <google/protobuf/io/zero_copy_stream_impl_lite.h>

#include <cstddef>
#include <cstdint>
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

// Messages one after the other, each after its length as a varint.
class DelimitedReader : google::protobuf::io::CopyingInputStream {
 public:
  // The stream must outlive the reader; errors name it.
  explicit DelimitedReader(ByteStream& stream) : stream_(stream), blocks_(this, 1 << 18) {}

  // Reads the next message; false at the end of the stream. Throws Error when there is no sensible
  // length. When the stream ends within the message, bytes() is what is there and cut() is true.
  bool Next();

  // Valid until the next call.
  const std::string& bytes() const { return bytes_; }
  // Where the message begins, after its length.
  std::int64_t offset() const { return offset_; }
  bool cut() const { return bytes_.size() < size_; }
  std::size_t size() const { return size_; }

 private:
  int Read(void* to, int size) override {
    return static_cast<int>(stream_.Read(static_cast<char*>(to), static_cast<std::size_t>(size)));
  }

  ByteStream& stream_;
  google::protobuf::io::CopyingInputStreamAdaptor blocks_;
  std::optional<google::protobuf::io::CodedInputStream> in_;
  std::int64_t begin_ = 0;  // where that began
  std::string bytes_;
  std::int64_t offset_ = 0;
  std::uint64_t size_ = 0;
};

}  // namespace virtual_modem::inspect
