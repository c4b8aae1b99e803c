// What libvirtual-modem-text must hide of a message, worked from the schema and the list of
// subscriber data by a reader of its own.
#pragma once

#include <cstdint>
#include <string>

#include "support/schema.h"

namespace virtual_modem::testing {

enum class Edit : std::uint8_t {
  kAlter,  // gives each byte, and each number, another value
  kPlant,  // the same, but makes each byte of a string kMarker; strings that are shown read ccc
};
inline constexpr char kMarker = '\x16';

struct Edited {
  std::string bytes;
  bool malformed;
  bool wrong_type;  // a declared field has a wire type not its own
};

// Edits encoded bytes in place, which all keep their meaning but for what is to be masked:
// subscriber data, values of unknown fields, and what stands after a break. With `shape` all
// strings and lists of numbers are to be masked.
Edited EditHidden(const MessageSchema& schema, std::string bytes, Edit edit, bool shape);

}  // namespace virtual_modem::testing
