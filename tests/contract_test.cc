// The contract that every message class and every enumeration fulfils, held for all of them. What a
// class must do is read from the schema table; the bytes come from the hand-written wire format.
#include <google/protobuf/arena.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <limits>
#include <memory>
#include <ostream>
#include <string>
#include <string_view>
#include <utility>
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

constexpr int kUndeclaredField = 20000;  // no message comes near it

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

  // Parses and writes again.
  static std::string Again(const std::string& bytes) { return Bytes(*Parse(bytes)); }
};

TEST_P(MessageContract, FreshObjectIsEmpty) {
  const std::unique_ptr<MessageLite> message = type().create();
  EXPECT_EQ(message->GetTypeName(), schema().name);
  EXPECT_EQ(message->ByteSizeLong(), 0U);
  EXPECT_EQ(Hex(Bytes(*message)), "");
  const bool requires_a_field =
      std::any_of(schema().fields.begin(), schema().fields.end(),
                  [](const FieldSchema& field) { return field.label == Label::kRequired; });
  EXPECT_EQ(message->IsInitialized(), !requires_a_field);
}

// Zero and empty values are present like any other: a value never decides what is written.
TEST_P(MessageContract, EveryFieldIsReadAndWritten) {
  for (const Values values : {Values::kZero, Values::kHigh, Values::kLow}) {
    const std::string bytes = Sample(values);
    const std::unique_ptr<MessageLite> message = Parse(bytes);
    EXPECT_TRUE(message->IsInitialized());
    EXPECT_EQ(message->ByteSizeLong(), bytes.size());
    EXPECT_EQ(message->GetCachedSize(), static_cast<int>(bytes.size()));
    EXPECT_EQ(Hex(Bytes(*message)), Hex(bytes));
  }
}

TEST_P(MessageContract, FieldsAreWrittenInNumberOrder) {
  std::vector<std::string> parts = EncodeParts(schema(), {{Values::kHigh}});
  std::reverse(parts.begin(), parts.end());
  std::string reversed;
  for (const std::string& part : parts) reversed += part;
  // Reversing swaps the two elements of a repeated field too, which are alike.
  EXPECT_EQ(Hex(Again(reversed)), Hex(Sample(Values::kHigh)));
}

TEST_P(MessageContract, CopyIsDeep) {
  const std::string bytes = Sample(Values::kHigh) + UnknownFields();
  std::unique_ptr<MessageLite> original = Parse(bytes);
  const std::unique_ptr<MessageLite> constructed = type().copy(*original);
  const std::unique_ptr<MessageLite> assigned = Parse(Sample(Values::kLow));
  type().copy_from(*assigned, *original);
  type().copy_from(*assigned, *assigned);
  original.reset();
  EXPECT_EQ(Hex(Bytes(*constructed)), Hex(bytes));
  EXPECT_EQ(Hex(Bytes(*assigned)), Hex(bytes));
}

TEST_P(MessageContract, ClearedObjectIsReusedWithoutRemains) {
  const std::unique_ptr<MessageLite> message = Parse(Sample(Values::kHigh) + UnknownFields());
  message->Clear();
  EXPECT_EQ(Hex(Bytes(*message)), "");
  EXPECT_EQ(message->IsInitialized(), type().create()->IsInitialized());
  for (const Recipe& recipe : {Recipe{{Values::kLow}}, Recipe{{Values::kZero}, true}}) {
    const std::string bytes = Encode(schema(), recipe);
    ASSERT_TRUE(message->ParsePartialFromString(bytes));
    EXPECT_EQ(Hex(Bytes(*message)), Hex(bytes));
  }
}

TEST_P(MessageContract, MergeAppendsRepeatedAndOverwritesPresent) {
  for (const auto& [into, from] :
       {std::pair(Values::kHigh, Values::kZero), std::pair(Values::kZero, Values::kLow)}) {
    const std::unique_ptr<MessageLite> source = Parse(Sample(from) + UnknownFields());
    const std::string merged = Encode(schema(), {{into, from}}) + UnknownFields();

    const std::unique_ptr<MessageLite> by_class = Parse(Sample(into));
    type().merge_from(*by_class, *source);
    EXPECT_EQ(Hex(Bytes(*by_class)), Hex(merged));

    const std::unique_ptr<MessageLite> by_base = Parse(Sample(into));
    by_base->CheckTypeAndMergeFrom(*source);
    EXPECT_EQ(Hex(Bytes(*by_base)), Hex(merged));

    EXPECT_EQ(Hex(Again(Sample(into) + Sample(from) + UnknownFields())), Hex(merged));
  }
  // What is absent in the source stays as it is.
  const std::unique_ptr<MessageLite> untouched = Parse(Sample(Values::kHigh));
  type().merge_from(*untouched, type().prototype);
  EXPECT_EQ(Hex(Bytes(*untouched)), Hex(Sample(Values::kHigh)));
}

TEST_P(MessageContract, SwapExchangesOnHeapAndArena) {
  const std::string first = Sample(Values::kHigh) + UnknownFields();
  const std::string second = Encode(schema(), {{Values::kLow}, true});
  Arena arena;
  const std::unique_ptr<MessageLite> heap = type().create();
  const std::unique_ptr<MessageLite> other_heap = type().create();
  MessageLite* const on_arena = type().create_on(&arena);
  MessageLite* const other_on_arena = type().create_on(&arena);
  for (const auto& [left, right] :
       {std::pair(heap.get(), other_heap.get()), std::pair(on_arena, other_on_arena),
        std::pair(heap.get(), on_arena)}) {
    ASSERT_TRUE(left->ParsePartialFromString(first));
    ASSERT_TRUE(right->ParsePartialFromString(second));
    type().swap(*left, *right);
    EXPECT_EQ(Hex(Bytes(*left)), Hex(second));
    EXPECT_EQ(Hex(Bytes(*right)), Hex(first));
  }
}

TEST_P(MessageContract, ArenaOwnsEverything) {
  const std::string bytes = Sample(Values::kHigh) + UnknownFields();
  std::unique_ptr<MessageLite> copy;
  {
    Arena arena;
    MessageLite* const created = type().create_on(&arena);
    MessageLite* const made_new = created->New(&arena);
    for (MessageLite* const message : {created, made_new}) {
      EXPECT_EQ(message->GetArena(), &arena);
      ASSERT_TRUE(message->ParsePartialFromString(bytes));
      EXPECT_EQ(Hex(Bytes(*message)), Hex(bytes));
    }
    copy = type().copy(*created);
  }
  EXPECT_EQ(copy->GetArena(), nullptr);
  EXPECT_EQ(Hex(Bytes(*copy)), Hex(bytes));
}

TEST_P(MessageContract, UnknownFieldsFollowKnownOnes) {
  std::string input;
  std::string unknown;
  for (const std::string& part : EncodeParts(schema(), {{Values::kHigh}})) {
    input += UnknownFields() + part;
    unknown += UnknownFields();
  }
  EXPECT_EQ(Hex(Again(input)), Hex(Sample(Values::kHigh) + unknown));

  for (const FieldSchema& field : schema().fields) {
    if (field.kind != Kind::kMessage) continue;
    const std::string nested = wire::BytesField(field.number, UnknownFields());
    EXPECT_EQ(Hex(Again(nested)), Hex(nested)) << field.name;
  }
}

TEST_P(MessageContract, TruncatedInputIsRefusedUnlessItEndsBetweenFields) {
  const std::vector<std::string> parts = EncodeParts(schema(), {{Values::kHigh}});
  const std::string bytes = Sample(Values::kHigh);
  std::vector<std::size_t> boundaries{0};
  for (const std::string& part : parts) boundaries.push_back(boundaries.back() + part.size());
  for (std::size_t size = 0; size <= bytes.size(); ++size) {
    const std::unique_ptr<MessageLite> message = type().create();
    const std::string prefix = bytes.substr(0, size);
    const bool between = std::binary_search(boundaries.begin(), boundaries.end(), size);
    EXPECT_EQ(message->ParsePartialFromString(prefix), between) << Hex(prefix);
    if (between) {
      EXPECT_EQ(Hex(Bytes(*message)), Hex(prefix));
    }
  }
}

TEST_P(MessageContract, MalformedInputIsRefused) {
  using std::string_literals::operator""s;
  for (const std::string& bad : {
           "\0"s,                                                         // tag 0
           "\2\0"s,                                                       // field number 0
           wire::Tag(kUndeclaredField, wire::kEnd),                       // end of no group
           wire::Tag(1, wire::kStart) + wire::Tag(2, wire::kEnd),         // end of another group
           wire::Tag(1, wire::kStart),                                    // group without end
           "\x0e"s, "\x0f"s,                                              // wire types 6 and 7
           wire::Tag(1, wire::kVarint) + std::string(10, '\xff') + "\1",  // eleven bytes
           wire::Tag(kUndeclaredField, wire::kBytes) + wire::Varint(0x7fffffff),  // past the end
           wire::Tag(kUndeclaredField, wire::kBytes) + wire::Varint(0xffffffff),  // over any limit
       }) {
    EXPECT_FALSE(type().create()->ParsePartialFromString(Sample(Values::kHigh) + bad)) << Hex(bad);
  }
}

TEST_P(MessageContract, RequiredFieldsAndNoOthersDecideInitialization) {
  EXPECT_TRUE(Parse(Encode(schema(), {{Values::kZero}, true}))->IsInitialized());
  for (const FieldPath& path : RequiredPaths(schema())) {
    const std::string bytes = Encode(schema(), {{Values::kHigh}, false, path});
    const std::unique_ptr<MessageLite> message = Parse(bytes);
    std::string way;
    for (const FieldSchema* field : path) way += "." + std::string(field->name);
    EXPECT_FALSE(message->IsInitialized()) << "without " << way;
    // The size is added up field by field now; the others are written all the same.
    EXPECT_EQ(message->ByteSizeLong(), bytes.size()) << "without " << way;
    EXPECT_EQ(Hex(Bytes(*message)), Hex(bytes)) << "without " << way;
  }
}

// A known number that arrives as another wire type is an unknown field, and the field stays absent:
// were it read, it would be overwritten by the good one that follows, or written as another type.
TEST_P(MessageContract, OtherWireTypeIsAnUnknownField) {
  for (const FieldSchema& field : schema().fields) {
    const bool varint = field.kind != Kind::kString && field.kind != Kind::kMessage;
    std::vector<std::string> others{wire::Fixed32Field(field.number),
                                    wire::Fixed64Field(field.number),
                                    wire::GroupField(field.number, "")};
    if (!varint) others.push_back(wire::VarintField(field.number, 1));
    if (varint && field.label != Label::kRepeated) {
      others.push_back(wire::BytesField(field.number, "\1"));
    }
    const std::string without = Encode(schema(), {{Values::kHigh}, false, {&field}});
    for (const std::string& other : others) {
      const std::unique_ptr<MessageLite> message = Parse(other + without);
      EXPECT_EQ(Hex(Bytes(*message)), Hex(without + other)) << field.name;
      EXPECT_EQ(message->IsInitialized(), field.label != Label::kRequired) << field.name;
      EXPECT_EQ(Hex(Again(other + Sample(Values::kHigh))), Hex(Sample(Values::kHigh) + other))
          << field.name;
    }
  }
}

// What the type of each field makes of a varint: 32 bits with or without sign, truth, or membership
// in the enumeration; an undeclared number is kept as an unknown field and the field stays absent.
TEST_P(MessageContract, VarintsAreReadAsTheTypeOfTheField) {
  for (const FieldSchema& field : schema().fields) {
    if (field.kind == Kind::kString || field.kind == Kind::kMessage) continue;
    const std::string without = Encode(schema(), {{Values::kHigh}, false, {&field}});
    std::vector<std::int64_t> numbers{0,           1,           2,           -1,
                                      0x7fffffff,  0x80000000,  0xffffffff,  0x100000000,
                                      -0x7fffffff, -0x80000000, -0x80000001, 0x7fffffff00000001};
    if (field.kind == Kind::kEnum) {
      for (const EnumValue& value : SchemaOfEnum(field.type).values) {
        numbers.insert(numbers.end(), {value.number - 1, value.number, value.number + 1});
      }
    }
    for (const std::int64_t number : numbers) {
      std::int64_t read = static_cast<std::int32_t>(number);
      if (field.kind == Kind::kUint32) read = static_cast<std::uint32_t>(number);
      if (field.kind == Kind::kBool) read = number != 0 ? 1 : 0;
      const bool stored = field.kind != Kind::kEnum || SchemaOfEnum(field.type).Declares(read);
      const std::string arriving = wire::VarintField(field.number, number);
      if (!stored) {
        const std::unique_ptr<MessageLite> message = Parse(arriving + without);
        EXPECT_EQ(Hex(Bytes(*message)), Hex(without + arriving)) << field.name << " " << number;
        EXPECT_EQ(message->IsInitialized(), field.label != Label::kRequired) << field.name;
      } else {
        EXPECT_EQ(Hex(Again(arriving)), Hex(wire::VarintField(field.number, read)))
            << field.name << " " << number;
        EXPECT_TRUE(Parse(arriving + without)->IsInitialized()) << field.name;
      }
    }
  }
}

TEST_P(MessageContract, PackedNumbersAreReadAndWrittenUnpacked) {
  for (const FieldSchema& field : schema().fields) {
    if (field.label != Label::kRepeated || field.kind == Kind::kString ||
        field.kind == Kind::kMessage) {
      continue;
    }
    const std::int64_t all_ones = field.kind == Kind::kInt32 ? std::int64_t{-1} : 0xffffffff;
    const std::string first = wire::VarintField(field.number, 300);
    const std::string packed = wire::BytesField(
        field.number, wire::Varint(0) + wire::Varint(static_cast<std::uint64_t>(all_ones)));
    const std::string unpacked =
        wire::VarintField(field.number, 0) + wire::VarintField(field.number, all_ones);
    EXPECT_EQ(Hex(Again(first + packed)), Hex(first + unpacked)) << field.name;
    EXPECT_EQ(Hex(Again(packed + first)), Hex(unpacked + first)) << field.name;
    EXPECT_EQ(Hex(Again(wire::BytesField(field.number, ""))), "") << field.name;
    EXPECT_FALSE(type().create()->ParsePartialFromString(wire::BytesField(field.number, "\x80")))
        << field.name;
  }
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
    for (const int beside : {number - 1, number + 1}) {
      EXPECT_EQ(type.is_valid(beside), schema.Declares(beside)) << beside;
      EXPECT_EQ(type.name_of(beside).empty(), !schema.Declares(beside)) << beside;
    }
  }
}

TEST_P(EnumContract, OtherNamesAndNumbersAreRefused) {
  const EnumType& type = GetParam();
  const std::string known(SchemaOfEnum(type.name).values.front().name);
  std::string lower = known;
  std::transform(lower.begin(), lower.end(), lower.begin(),
                 [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
  for (const std::string& name :
       {std::string(), lower, known + "_", known.substr(1), known + std::string(1, '\0')}) {
    int parsed = -12345;
    EXPECT_FALSE(type.parse(name, &parsed)) << name;
    EXPECT_EQ(parsed, -12345) << name;
  }
  for (const int number : {std::numeric_limits<int>::min(), std::numeric_limits<int>::max()}) {
    EXPECT_FALSE(type.is_valid(number));
    EXPECT_EQ(type.name_of(number), "");
  }
}

INSTANTIATE_TEST_SUITE_P(All, EnumContract, ::testing::ValuesIn(AllEnumTypes()),
                         [](const auto& info) { return std::string(info.param.name); });

}  // namespace
}  // namespace virtual_modem::testing
