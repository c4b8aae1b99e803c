// Hostile bytes by every way in, and what a parse that fails leaves behind; docs/hostile-input.md
// promises what is tested here.
#include "support/ways_in.h"

#include <google/protobuf/io/zero_copy_stream_impl_lite.h>
#include <google/protobuf/stubs/common.h>
#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <vector>

#include "support/message_types.h"
#include "support/samples.h"
#include "support/wire.h"
#include "virtual_modem/radio.pb.h"

namespace virtual_modem::testing {
namespace {

using google::protobuf::io::ArrayInputStream;
using std::string_literals::operator""s;

// Every way must do with the bytes what reading them from an array does.
void ExpectAllAgree(const MessageType& type, const std::string& bytes, int chunk) {
  const auto expected = type.create();
  const bool parses = expected->ParsePartialFromArray(bytes.data(), static_cast<int>(bytes.size()));
  for (const WayIn& way : WaysIn()) {
    const auto message = type.create();
    EXPECT_EQ(way.parse(*message, bytes, chunk), parses)
        << type.name << ", " << way.name << ", chunks of " << chunk << ": " << wire::Hex(bytes);
    if (parses) {
      EXPECT_EQ(message->SerializePartialAsString(), expected->SerializePartialAsString());
    }
  }
}

// What ends a message before its bytes end, and what follows then.
const std::vector<std::string> kEnds = {
    "",
    "\0"s,
    "\0\0\0\0"s,
    std::string(20, '\0'),
    wire::Tag(1, wire::kEnd),
    wire::Tag(99, wire::kEnd) + wire::VarintField(99, 1),
    wire::Tag(99, wire::kStart) + wire::VarintField(1, 1),
};

TEST(WaysIn, AgreeOnEveryMessage) {
  for (const MessageType& type : AllMessageTypes()) {
    const std::string sample = Encode(SchemaOf(type.name), {{Values::kHigh}});
    for (const std::string& end : kEnds) {
      for (const int chunk : {1, 3, 16, 100}) ExpectAllAgree(type, sample + end, chunk);
    }
  }
}

// The runtime reads 16 bytes ahead, and files and istreams by 8192: each end stands at each place
// around the edge of a chunk.
TEST(WaysIn, AgreeAtTheEdgesOfChunks) {
  const MessageType& type = *FindMessageType("Dial");
  for (const std::string& end : kEnds) {
    for (std::size_t before = 0; before < 40; ++before) {
      const std::string bytes = std::string(before, 'a');
      const std::string field = before == 0 ? "" : wire::BytesField(3, bytes);
      for (int chunk = 1; chunk <= 34; ++chunk) ExpectAllAgree(type, field + end, chunk);
    }
    for (std::size_t before = 8192 - 40; before < 8192 + 8; ++before) {
      ExpectAllAgree(type, wire::BytesField(3, std::string(before, 'a')) + end, 8192);
    }
  }
}

// Why those functions are not among the ways in. Should this fail with another runtime, the page
// may be kinder.
TEST(WaysIn, ReadUpToABoundWithinAStreamThrows) {
  const std::string zeros(4, '\0');
  ArrayInputStream stream(zeros.data(), static_cast<int>(zeros.size()), 1);
#if RUNTIME_THROWS
  EXPECT_THROW(Dial().ParsePartialFromBoundedZeroCopyStream(&stream, 4),
               google::protobuf::FatalException);
#else
  EXPECT_DEATH(Dial().ParsePartialFromBoundedZeroCopyStream(&stream, 4), "");
#endif
}

// A group that was cut short leaves its beginning among the unknown fields: what the message then
// writes is no message, and spoils one that it is merged into. Clear() mends it.
TEST(FailedParse, LeavesAMessageToClear) {
  for (const MessageType& type : AllMessageTypes()) {
    SCOPED_TRACE(type.name);
    const std::string sample = Encode(SchemaOf(type.name), {{Values::kHigh}});
    const std::string cut = sample + wire::Tag(99, wire::kStart) + wire::VarintField(1, 1);
    const auto good = type.create();
    ASSERT_TRUE(good->ParsePartialFromString(sample));
    Arena arena;
    const auto on_heap = type.create();
    for (MessageLite* message : {on_heap.get(), type.create_on(&arena)}) {
      ASSERT_FALSE(message->ParsePartialFromString(cut));
      EXPECT_FALSE(type.create()->ParsePartialFromString(message->SerializePartialAsString()));
      const auto merged = type.create();
      type.copy_from(*merged, *good);
      type.merge_from(*merged, *message);
      EXPECT_FALSE(type.create()->ParsePartialFromString(merged->SerializePartialAsString()));

      message->Clear();
      EXPECT_EQ(message->SerializePartialAsString(), "");
      type.merge_from(*message, *good);
      EXPECT_EQ(message->SerializePartialAsString(), sample);
    }
  }
}

}  // namespace
}  // namespace virtual_modem::testing
