// The wire format written by hand, a few lines long, so that the bytes which the tests expect owe
// nothing to the runtime under test.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace virtual_modem::testing::wire {

enum Type : std::uint8_t {
  kVarint = 0,
  kFixed64 = 1,
  kBytes = 2,
  kStart = 3,
  kEnd = 4,
  kFixed32 = 5
};

std::string Varint(std::uint64_t value);
std::string Tag(int field, Type type);

// Whole fields. Negative numbers take ten bytes, as in int32 and enumerations.
std::string VarintField(int field, std::int64_t value);
std::string BytesField(int field, std::string_view bytes);
std::string GroupField(int field, std::string_view content);

}  // namespace virtual_modem::testing::wire
