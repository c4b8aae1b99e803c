// What every message class fulfils beside reading and writing, which are for golden/ and interop/.
// The bytes come from the schema table and the hand-written wire format.
#include <google/protobuf/arena.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <memory>
#include <ostream>
#include <string>
#include <vector>

#include "support/message_types.h"
#include "support/samples.h"
#include "support/schema.h"
#include "support/wire.h"

namespace virtual_modem::testing {

void PrintTo(const MessageType& type, std::ostream* out) { *out << type.name; }

namespace {

using wire::Hex;

constexpr int kUndeclaredField = 19000;  // no schema may declare it, nor those beside it

std::string Bytes(const MessageLite& message) { return message.SerializePartialAsString(); }

// One field of each wire type, none of them declared.
std::string UnknownFields() {
  return wire::VarintField(kUndeclaredField, -1) + wire::Fixed64Field(kUndeclaredField + 1) +
         wire::BytesField(kUndeclaredField + 2, "kept") +
         wire::GroupField(kUndeclaredField + 3, wire::VarintField(1, 7)) +
         wire::Fixed32Field(kUndeclaredField);
}

class MessageContract : public ::testing::TestWithParam<MessageType> {
 protected:
  static std::string Sample(Values values) { return Encode(schema(), {{values}}); }

  static const MessageType& type() { return GetParam(); }
  static const MessageSchema& schema() { return SchemaOf(GetParam().name); }

  static std::unique_ptr<MessageLite> Parse(const std::string& bytes) {
    std::unique_ptr<MessageLite> message = type().create();
    EXPECT_TRUE(message->ParsePartialFromString(bytes)) << Hex(bytes);
    return message;
  }
};

// Copies are deep, a cleared object shows no remains, merging appends and overwrites.
TEST_P(MessageContract, ObjectsAreCopiedMergedAndReused) {
  const std::string bytes = Sample(Values::kHigh) + UnknownFields();
  std::unique_ptr<MessageLite> original = Parse(bytes);
  const std::unique_ptr<MessageLite> constructed = type().copy(*original);
  const std::unique_ptr<MessageLite> assigned = Parse(Sample(Values::kLow));
  type().copy_from(*assigned, *original);
  type().copy_from(*assigned, *assigned);
  original.reset();
  EXPECT_EQ(Hex(Bytes(*constructed)), Hex(bytes));
  EXPECT_EQ(Hex(Bytes(*assigned)), Hex(bytes));

  const std::unique_ptr<MessageLite> merged = Parse(Sample(Values::kLow));
  type().merge_from(*merged, *constructed);
  EXPECT_EQ(Hex(Bytes(*merged)),
            Hex(Encode(schema(), {{Values::kLow, Values::kHigh}}) + UnknownFields()));
  merged->Clear();
  EXPECT_EQ(Hex(Bytes(*merged)), "");
  EXPECT_EQ(merged->IsInitialized(), type().create()->IsInitialized());
  const std::string fewer = Encode(schema(), {{Values::kZero}, true});
  ASSERT_TRUE(merged->ParsePartialFromString(fewer));
  EXPECT_EQ(Hex(Bytes(*merged)), Hex(fewer));
}

TEST_P(MessageContract, HeapAndArenaAreSwappedAndOutlived) {
  const std::string first = Sample(Values::kHigh) + UnknownFields();
  const std::string second = Encode(schema(), {{Values::kLow}, true});
  const std::unique_ptr<MessageLite> heap = Parse(first);
  const std::unique_ptr<MessageLite> other_heap = Parse(first);
  {
    Arena arena;
    MessageLite* const on_arena = type().create_on(&arena)->New(&arena);
    EXPECT_EQ(on_arena->GetArena(), &arena);
    for (MessageLite* const left : {on_arena, other_heap.get()}) {
      ASSERT_TRUE(left->ParsePartialFromString(second));
      type().swap(*left, *heap);
      EXPECT_EQ(Hex(Bytes(*left)), Hex(first));
      EXPECT_EQ(Hex(Bytes(*heap)), Hex(second));
      type().swap(*left, *heap);
    }
    type().swap(*on_arena, *heap);
  }
  EXPECT_EQ(Hex(Bytes(*heap)), Hex(second));
}

INSTANTIATE_TEST_SUITE_P(All, MessageContract, ::testing::ValuesIn(AllMessageTypes()),
                         [](const auto& info) {
                           std::string name(info.param.name);
                           std::replace(name.begin(), name.end(), '.', '_');
                           return name;
                         });

}  // namespace
}  // namespace virtual_modem::testing
