// What every message class fulfils beside reading and writing, which are for golden/ and interop/.
// The bytes are the golden samples, and unknown fields.
#include <google/protobuf/arena.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <memory>
#include <ostream>
#include <string>
#include <vector>

#include "support/message_types.h"
#include "support/schema.h"
#include "support/wire.h"

namespace virtual_modem::testing {

void PrintTo(const MessageType& type, std::ostream* out) { *out << type.name; }

namespace {

constexpr int kUndeclaredField = 19000;  // no schema may declare it, nor those beside it

std::string Bytes(const MessageLite& message) { return message.SerializePartialAsString(); }

// One field of each wire type, none of them declared.
std::string UnknownFields() {
  return wire::VarintField(kUndeclaredField, -1) + wire::Tag(kUndeclaredField + 1, wire::kFixed64) +
         "12345678" + wire::BytesField(kUndeclaredField + 2, "kept") +
         wire::GroupField(kUndeclaredField + 3, wire::VarintField(1, 7)) +
         wire::Tag(kUndeclaredField, wire::kFixed32) + "1234";
}

class MessageContract : public ::testing::TestWithParam<MessageType> {
 protected:
  static const MessageType& type() { return GetParam(); }
  static std::string Full() { return std::string(SchemaOf(type().name).full) + UnknownFields(); }
  static std::string Minimal() { return std::string(SchemaOf(type().name).minimal); }

  static std::unique_ptr<MessageLite> Parse(const std::string& bytes) {
    std::unique_ptr<MessageLite> message = type().create();
    EXPECT_TRUE(message->ParsePartialFromString(bytes));
    return message;
  }
};

// Copies are deep, a cleared object shows no remains, merging is reading one after the other.
TEST_P(MessageContract, ObjectsAreCopiedMergedAndReused) {
  const std::string bytes = Full();
  std::unique_ptr<MessageLite> original = Parse(bytes);
  const std::unique_ptr<MessageLite> constructed = type().copy(*original);
  const std::unique_ptr<MessageLite> assigned = Parse(Minimal());
  type().copy_from(*assigned, *original);
  type().copy_from(*assigned, *assigned);
  original.reset();
  EXPECT_EQ(Bytes(*constructed), bytes);
  EXPECT_EQ(Bytes(*assigned), bytes);

  const std::unique_ptr<MessageLite> merged = Parse(Minimal());
  std::string read = Minimal();
  for (int i = 0; i < 2; ++i) {
    type().merge_from(*merged, *constructed);
    read += bytes;
    EXPECT_EQ(Bytes(*merged), Bytes(*Parse(read)));
  }
  merged->Clear();
  EXPECT_EQ(Bytes(*merged), "");
  EXPECT_EQ(merged->IsInitialized(), type().create()->IsInitialized());
  ASSERT_TRUE(merged->ParsePartialFromString(Minimal()));
  EXPECT_EQ(Bytes(*merged), Minimal());
}

TEST_P(MessageContract, HeapAndArenaAreSwappedAndOutlived) {
  const std::string first = Full();
  const std::string second = Minimal();
  const std::unique_ptr<MessageLite> heap = Parse(first);
  const std::unique_ptr<MessageLite> other_heap = Parse(first);
  {
    Arena arena;
    MessageLite* const on_arena = type().create_on(&arena)->New(&arena);
    EXPECT_EQ(on_arena->GetArena(), &arena);
    for (MessageLite* const left : {on_arena, other_heap.get()}) {
      ASSERT_TRUE(left->ParsePartialFromString(second));
      type().swap(*left, *heap);
      EXPECT_EQ(Bytes(*left), first);
      EXPECT_EQ(Bytes(*heap), second);
      type().swap(*left, *heap);
    }
    type().swap(*on_arena, *heap);
  }
  EXPECT_EQ(Bytes(*heap), second);
}

INSTANTIATE_TEST_SUITE_P(All, MessageContract, ::testing::ValuesIn(AllMessageTypes()),
                         [](const auto& info) {
                           std::string name(info.param.name);
                           std::replace(name.begin(), name.end(), '.', '_');
                           return name;
                         });

}  // namespace
}  // namespace virtual_modem::testing
