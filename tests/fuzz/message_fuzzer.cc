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
#include "ways_in.h"

namespace virtual_modem::testing {
namespace {

using google::protobuf::io::ArrayOutputStream;

class MessageChecker {
 public:
  MessageChecker(std::size_t index, int chunk) : type_(AllMessageTypes()[index]), chunk_(chunk) {}

  void Run(std::string_view input) const {
    const auto message = type_.create();
    const bool parsed = Parse(input, *message);
    // What a failed parse leaves may be no message any more; writing it harms nobody.
    const std::string bytes = Bytes(*message);
    Check(Bytes(*type_.copy(*message)) == bytes);
    for (const WayIn& way : WaysIn()) {
      const auto other = type_.create();
      FUZZ_CHECK(way.parse(*other, input, chunk_) == parsed, way.name.data());
      if (parsed) FUZZ_CHECK(Bytes(*other) == bytes, way.name.data());
    }
    if (parsed) {
      CheckRoundTrips(*message, bytes);
      CheckOperations(*message, bytes);
    }

    message->Clear();
    Check(Bytes(*message).empty());
    // What Clear() kept for reuse must not show.
    if (parsed) {
      Check(Parse(input, *message));
      Check(Bytes(*message) == bytes);
    }
  }

 private:
  void Check(bool condition) const { FUZZ_CHECK(condition, type_.name.data()); }

  static bool Parse(std::string_view input, MessageLite& message) {
    return message.ParsePartialFromArray(input.data(), static_cast<int>(input.size()));
  }

  // The message's bytes, exactly as many as ByteSizeLong() says.
  std::string Bytes(const MessageLite& message) const {
    std::string bytes(message.ByteSizeLong(), '\0');
    auto* begin = reinterpret_cast<std::uint8_t*>(bytes.data());
    Check(message.SerializeWithCachedSizesToArray(begin) == begin + bytes.size());
    return bytes;
  }

  void CheckRoundTrips(const MessageLite& message, const std::string& bytes) const {
    const auto again = type_.create();
    Check(Parse(bytes, *again));
    Check(Bytes(*again) == bytes);
    Check(again->IsInitialized() == message.IsInitialized());

    Arena arena;
    MessageLite* on_arena = type_.create_on(&arena);
    Check(Parse(bytes, *on_arena));
    Check(Bytes(*on_arena) == bytes);

    std::string chunked(bytes.size(), '\0');
    ArrayOutputStream stream(chunked.data(), static_cast<int>(chunked.size()), chunk_);
    Check(on_arena->SerializePartialToZeroCopyStream(&stream));
    Check(chunked == bytes);

    // Swapping across arenas copies, swapping on one heap exchanges pointers.
    const auto other = type_.create();
    type_.swap(*other, *on_arena);
    Check(Bytes(*other) == bytes && Bytes(*on_arena).empty());
    type_.swap(*other, *again);
    type_.swap(*again, *other);
    Check(Bytes(*other) == bytes && Bytes(*again) == bytes);
  }

  void CheckOperations(const MessageLite& message, const std::string& bytes) const {
    const auto other = type_.create();
    type_.merge_from(*other, message);
    Check(Bytes(*other) == bytes);
    type_.copy_from(*other, *other);
    Check(Bytes(*other) == bytes);

    // Merging is reading one message's bytes after the other's.
    type_.merge_from(*other, message);
    const auto twice = type_.create();
    Check(Parse(bytes + bytes, *twice));
    Check(Bytes(*other) == Bytes(*twice));

    type_.copy_from(*other, message);
    Check(Bytes(*other) == bytes);
  }

  const MessageType& type_;
  int chunk_;  // bytes per chunk of a stream
};

}  // namespace
}  // namespace virtual_modem::testing

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using virtual_modem::testing::AllMessageTypes;
  if (size < 2) return -1;
  const std::size_t index = data[0] % AllMessageTypes().size();
  const int chunk = 1 + data[1];
  virtual_modem::testing::MessageChecker(index, chunk)
      .Run({reinterpret_cast<const char*>(data) + 2, size - 2});
  return 0;
}
