#include "support/wire.h"

namespace virtual_modem::testing::wire {

std::string Varint(std::uint64_t value) {
  std::string out;
  for (; value >= 0x80; value >>= 7) out += static_cast<char>((value & 0x7f) | 0x80);
  return out += static_cast<char>(value);
}

std::string Tag(int field, Type type) {
  return Varint(static_cast<std::uint64_t>(field) << 3 | type);
}

std::string VarintField(int field, std::int64_t value) {
  return Tag(field, kVarint) + Varint(static_cast<std::uint64_t>(value));
}

std::string BytesField(int field, std::string_view bytes) {
  return Tag(field, kBytes) + Varint(bytes.size()) + std::string(bytes);
}

std::string GroupField(int field, std::string_view content) {
  return Tag(field, kStart) + std::string(content) + Tag(field, kEnd);
}

}  // namespace virtual_modem::testing::wire
