// Reading the wire format by hand. Each function takes its bytes off the front of the input; false
// when they are malformed or end too early.
#pragma once

#include <cstdint>
#include <string_view>

#include "support/schema.h"
#include "support/wire.h"

namespace virtual_modem::testing::wire {

inline Type TypeOf(Kind kind) {
  return kind == Kind::kString || kind == Kind::kMessage ? kBytes : kVarint;
}

// The field of that number, or nullptr.
inline const FieldSchema* FindField(const MessageSchema& schema, std::uint64_t number) {
  for (const FieldSchema& field : schema.fields) {
    if (static_cast<std::uint64_t>(field.number) == number) return &field;
  }
  return nullptr;
}

inline bool TakeVarint(std::string_view* in, std::uint64_t* value) {
  *value = 0;
  for (unsigned shift = 0; shift < 70 && !in->empty(); shift += 7) {
    const auto byte = static_cast<unsigned char>(in->front());
    in->remove_prefix(1);
    *value |= std::uint64_t{byte & 0x7fU} << shift;
    if (byte < 0x80) return true;
  }
  return false;
}

inline bool TakeRaw(std::string_view* in, std::uint64_t size, std::string_view* bytes) {
  if (size > in->size()) return false;
  *bytes = in->substr(0, size);
  in->remove_prefix(size);
  return true;
}

inline bool TakeBytes(std::string_view* in, std::string_view* payload) {
  std::uint64_t size = 0;
  return TakeVarint(in, &size) && TakeRaw(in, size, payload);
}

}  // namespace virtual_modem::testing::wire
