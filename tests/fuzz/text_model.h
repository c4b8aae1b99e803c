// What libvirtual-modem-text must make of a message, worked from the schema and the list of
// subscriber data by a reader of its own.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "support/schema.h"

namespace virtual_modem::testing {

// ---- What masked output must not tell
// -------------------------------------------------------------

enum class Edit : std::uint8_t {
  kAlter,  // gives each byte, and each number, another value
  kPlant,  // the same, but makes each byte of a string kMarker; strings that are shown read ccc
};
inline constexpr char kMarker = '\x16';

struct Edited {
  std::string bytes;
  bool malformed;
  bool wrong_type;      // a declared field has a wire type not its own
  std::size_t unknown;  // fields; undeclared numbers of enumerations count
};

// Edits encoded bytes in place, which all keep their meaning but for what is to be masked:
// subscriber data, unknown fields, what stands behind a break. An undeclared number of an
// enumeration stays one, and an unknown number is encoded in as many bytes as before. With `shape`
// all strings and lists of numbers are to be masked.
Edited EditHidden(const MessageSchema& schema, std::string bytes, Edit edit, bool shape);

// ---- What a message is
// ----------------------------------------------------------------------------

struct MessageModel {
  std::string masked;                // encoded, with X and 0 for subscriber data, nothing unknown
  std::vector<std::string> missing;  // paths of required fields, sorted
  std::size_t unknown_bytes = 0;     // that unknown fields take
};

// Requires bytes as a message writes them.
MessageModel ModelOf(const MessageSchema& schema, std::string_view bytes);

// The number in the field called serial.
std::optional<std::int32_t> SerialIn(const MessageSchema& schema, std::string_view bytes);

}  // namespace virtual_modem::testing
