// Sample bytes of any message, generated from the schema with the hand-written wire format.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "support/schema.h"

namespace virtual_modem::testing {

// The values that a sample has in all of its fields. Repeated fields have two elements.
enum class Values : std::uint8_t {
  kZero,  // 0, false, the lowest enumeration number, the empty string
  kHigh,  // the largest numbers, true, a string that is no UTF-8 and holds a zero byte
  kLow,   // the smallest numbers (2^31 where unsigned), true, another string
};

struct Recipe {
  // More than one: the bytes of those samples merged in that order.
  std::vector<Values> values;
  bool required_only = false;
};

// Canonical bytes: fields in number order.
std::string Encode(const MessageSchema& message, const Recipe& recipe);

}  // namespace virtual_modem::testing
