// Fuzz target over all messages. Input: one byte that chooses the type, one byte for the chunk size
// of streams, then the bytes to parse; message_mutator.cc edits them.
#include <google/protobuf/io/zero_copy_stream_impl_lite.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "check.h"
#include "support/message_types.h"

namespace virtual_modem::testing {
namespace {

using google::protobuf::io::ArrayInputStream;
using google::protobuf::io::ArrayOutputStream;

bool Parse(std::string_view input, MessageLite& message) {
  return message.ParsePartialFromArray(input.data(), static_cast<int>(input.size()));
}

// The message's bytes, exactly as many as ByteSizeLong() says.
std::string Bytes(const MessageLite& message) {
  std::string bytes(message.ByteSizeLong(), '\0');
  auto* begin = reinterpret_cast<std::uint8_t*>(bytes.data());
  FUZZ_CHECK(message.SerializeWithCachedSizesToArray(begin) == begin + bytes.size(), "size");
  return bytes;
}

// chunk: bytes per piece of a stream.
void Check(const MessageType& type, int chunk, std::string_view input) {
  const auto message = type.create();
  const bool parsed = Parse(input, *message);
  // What a failed parse leaves may be no message any more; writing it harms nobody.
  const std::string bytes = Bytes(*message);
  FUZZ_CHECK(Bytes(*type.copy(*message)) == bytes, "copy");
  ArrayInputStream in(input.data(), static_cast<int>(input.size()), chunk);
  const auto streamed = type.create();
  FUZZ_CHECK(streamed->ParsePartialFromZeroCopyStream(&in) == parsed, "read from a stream");
  message->Clear();
  FUZZ_CHECK(Bytes(*message).empty(), "clear");
  if (!parsed) return;

  // What Clear() kept for reuse must not show.
  FUZZ_CHECK(Parse(input, *message) && Bytes(*message) == bytes, "read again");
  FUZZ_CHECK(Bytes(*streamed) == bytes, "of a stream");
  Arena arena;
  MessageLite* on_arena = type.create_on(&arena);
  FUZZ_CHECK(Parse(bytes, *on_arena) && Bytes(*on_arena) == bytes, "round trip");
  FUZZ_CHECK(on_arena->IsInitialized() == message->IsInitialized(), "initialized");
  std::string chunked(bytes.size(), '\0');
  ArrayOutputStream out(chunked.data(), static_cast<int>(chunked.size()), chunk);
  FUZZ_CHECK(on_arena->SerializePartialToZeroCopyStream(&out) && chunked == bytes, "stream");

  // Merging is reading one message's bytes after the other's.
  const auto twice = type.create();
  FUZZ_CHECK(Parse(bytes + bytes, *twice), "bytes twice");
  type.merge_from(*on_arena, *message);
  FUZZ_CHECK(Bytes(*on_arena) == Bytes(*twice), "merge");
}

}  // namespace
}  // namespace virtual_modem::testing

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using virtual_modem::testing::AllMessageTypes;
  if (size < 2) return -1;
  virtual_modem::testing::Check(AllMessageTypes()[ChosenType(data, AllMessageTypes().size())],
                                1 + data[1], {reinterpret_cast<const char*>(data) + 2, size - 2});
  return 0;
}
