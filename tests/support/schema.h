// What the schema says of every message, as data read from the descriptor set by the full runtime
// in another process, and its golden samples: the expectations of the tests.
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
  std::string_view minimal;         // golden bytes: required fields alone
  std::string_view full;            // ... and of every field
};

// The message of that full name; aborts when there is none.
const MessageSchema& SchemaOf(std::string_view message);

}  // namespace virtual_modem::testing
