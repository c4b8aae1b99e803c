// The contract that every message class and every enumeration fulfils, held for all of them, beside
// what bytes cannot show: reading and writing is for golden/ and interop/. What a class must do is
// read from the schema table; the bytes come from the hand-written wire format.
#include <google/protobuf/arena.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
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
void PrintTo(const EnumType& type, std::ostream* out) { *out << type.name; }

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

class EnumContract : public ::testing::TestWithParam<EnumType> {};

TEST_P(EnumContract, NamesAndNumbersAreTheDeclaredOnes) {
  const EnumType& type = GetParam();
  const EnumSchema& schema = SchemaOfEnum(type.name);
  EXPECT_EQ(type.min, schema.values.front().number);
  EXPECT_EQ(type.max, schema.values.back().number);
  for (const auto& [name, number] : schema.values) {
    EXPECT_TRUE(type.is_valid(number)) << name;
    EXPECT_EQ(type.name_of(number), name);
    int parsed = std::numeric_limits<int>::min();
    EXPECT_TRUE(type.parse(std::string(name), &parsed)) << name;
    EXPECT_EQ(parsed, number) << name;
    const auto bits = static_cast<std::uint32_t>(number);
    for (const int beside : {static_cast<int>(bits - 1), static_cast<int>(bits + 1)}) {
      EXPECT_EQ(type.is_valid(beside), schema.Declares(beside)) << beside;
      EXPECT_EQ(type.name_of(beside).empty(), !schema.Declares(beside)) << beside;
    }
  }
}

INSTANTIATE_TEST_SUITE_P(All, EnumContract, ::testing::ValuesIn(AllEnumTypes()),
                         [](const auto& info) { return std::string(info.param.name); });

}  // namespace
}  // namespace virtual_modem::testing
