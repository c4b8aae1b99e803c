// What the schema says of every message and enumeration, as data read from the descriptor set by
// the full runtime in another process: the expectations of the tests.
#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

namespace virtual_modem::testing {

enum class Label : std::uint8_t { kRequired, kOptional, kRepeated };
enum class Kind : std::uint8_t {
  kInt32,
  kUint32,
  kInt64,
  kUint64,
  kBool,
  kEnum,
  kString,
  kMessage
};

struct FieldSchema {
  int number;
  std::string_view name;
  Label label;
  Kind kind;
  std::string_view type;  // full name of the message, name of the enumeration, else empty
  bool subscriber_data;   // listed in subscriber_data.txt
};

struct MessageSchema {
  std::string_view name;            // full name
  std::vector<FieldSchema> fields;  // in number order
};

struct EnumValue {
  std::string_view name;
  int number;
};

struct EnumSchema {
  std::vector<EnumValue> values;  // in number order
};

// The message of that full name and the enumeration of that name; abort when there is none.
const MessageSchema& SchemaOf(std::string_view message);
const EnumSchema& SchemaOfEnum(std::string_view enumeration);

}  // namespace virtual_modem::testing
