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

inline std::string Varint(std::uint64_t value) {
  std::string out;
  for (; value >= 0x80; value >>= 7) out += static_cast<char>((value & 0x7f) | 0x80);
  return out += static_cast<char>(value);
}

inline std::string Tag(int field, Type type) {
  return Varint(static_cast<std::uint64_t>(field) << 3 | type);
}

// Whole fields. Negative numbers take ten bytes, as in int32 and enumerations.
inline std::string VarintField(int field, std::int64_t value) {
  return Tag(field, kVarint) + Varint(static_cast<std::uint64_t>(value));
}

inline std::string BytesField(int field, std::string_view bytes) {
  return Tag(field, kBytes) + Varint(bytes.size()) + std::string(bytes);
}

inline std::string GroupField(int field, std::string_view content) {
  return Tag(field, kStart) + std::string(content) + Tag(field, kEnd);
}

}  // namespace virtual_modem::testing::wire
