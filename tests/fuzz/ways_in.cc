#include "ways_in.h"

#include <google/protobuf/io/coded_stream.h>
#include <google/protobuf/io/zero_copy_stream_impl_lite.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cstdint>
#include <sstream>
#include <string>

namespace virtual_modem::testing {
namespace {

using google::protobuf::MessageLite;
using google::protobuf::io::ArrayInputStream;
using google::protobuf::io::CodedInputStream;

int SizeOf(std::string_view bytes) { return static_cast<int>(bytes.size()); }

bool FromArray(MessageLite& message, std::string_view bytes, int /*chunk*/) {
  return message.ParsePartialFromArray(bytes.data(), SizeOf(bytes));
}

bool FromString(MessageLite& message, std::string_view bytes, int /*chunk*/) {
  return message.ParsePartialFromString(std::string(bytes));
}

bool FromStream(MessageLite& message, std::string_view bytes, int chunk) {
  ArrayInputStream stream(bytes.data(), SizeOf(bytes), chunk);
  return message.ParsePartialFromZeroCopyStream(&stream);
}

bool FromIstream(MessageLite& message, std::string_view bytes, int /*chunk*/) {
  std::istringstream stream{std::string(bytes)};
  return message.ParsePartialFromIstream(&stream);
}

bool FromFile(MessageLite& message, std::string_view bytes, int /*chunk*/) {
  const int file = memfd_create("message", MFD_CLOEXEC);
  const bool parsed = pwrite(file, bytes.data(), bytes.size(), 0) == SizeOf(bytes) &&
                      message.ParsePartialFromFileDescriptor(file);
  close(file);
  return parsed;
}

// Stops with true at a zero tag or at the end of a group that nobody began: the caller asks.
bool FromCoded(MessageLite& message, CodedInputStream& coded) {
  return message.ParsePartialFromCodedStream(&coded) && coded.ConsumedEntireMessage();
}

bool FromCodedArray(MessageLite& message, std::string_view bytes, int /*chunk*/) {
  CodedInputStream coded(reinterpret_cast<const std::uint8_t*>(bytes.data()), SizeOf(bytes));
  return FromCoded(message, coded);
}

bool FromCodedStream(MessageLite& message, std::string_view bytes, int chunk) {
  ArrayInputStream stream(bytes.data(), SizeOf(bytes), chunk);
  CodedInputStream coded(&stream);
  return FromCoded(message, coded);
}

// One of several messages in a stream, as its receiver is advised to read it.
bool FromPartOfStream(MessageLite& message, std::string_view bytes, int chunk) {
  const std::string all = std::string(bytes) + "next";
  ArrayInputStream stream(all.data(), SizeOf(all), chunk);
  CodedInputStream coded(&stream);
  std::string part;
  return coded.ReadString(&part, SizeOf(bytes)) && FromArray(message, part, chunk) &&
         coded.CurrentPosition() == SizeOf(bytes);
}

}  // namespace

const std::vector<WayIn>& WaysIn() {
  static const std::vector<WayIn> ways{
      {"array", FromArray},
      {"string", FromString},
      {"zero-copy stream", FromStream},
      {"istream", FromIstream},
      {"file descriptor", FromFile},
      {"coded array", FromCodedArray},
      {"coded stream", FromCodedStream},
      {"part of a stream", FromPartOfStream},
  };
  return ways;
}

}  // namespace virtual_modem::testing
