// The schema as numbers, for the walk over encoded bytes: which fields a message has, how each is
// called and read, and which are subscriber data. Free of the protobuf runtime, so that programs of
// the lite and of the full one can both compile it in: libvirtual-modem-text has the tables that
// the build generates, the inspector fills them from its descriptor pool.
#pragma once

#include <cstdint>
#include <string_view>

namespace virtual_modem::text {

enum class FieldKind : std::uint8_t {
  kNone,  // a number that the message does not declare
  kInt32,
  kUint32,
  kBool,
  kEnum,
  kString,
  kMessage,
};

inline constexpr unsigned kNamePadding = 32;

// A row of eight bytes is found faster than one of six; built for size, it is six.
#ifdef __OPTIMIZE_SIZE__
struct Field {
#else
struct alignas(8) Field {
#endif
  std::uint16_t name;      // offset into Tables::names
  std::uint8_t name_size;  // bytes, at most kNamePadding
  std::uint8_t number;
  std::uint8_t below;  // kMessage: index into Tables::messages; kEnum: of the enumeration
  FieldKind kind : 4;
  bool repeated : 1;
  bool required : 1;
  bool subscriber_data : 1;  // only of the kinds string, int32 and uint32
};

struct Message {
  std::uint16_t first_field;    // that of number 1, in Tables::fields; one row a number follows
  std::uint16_t highest_field;  // the highest number declared
};

struct Tables {
  const Message* messages;
  const Field* fields;
  const char* names;  // readable for kNamePadding bytes from the beginning of each
  // The name of a number of an enumeration, empty when it is not declared.
  std::string_view (*enum_name)(const void* context, unsigned enumeration, std::int32_t number);
  const void* context;  // for enum_name

  // Null when the message does not declare the number.
  const Field* Find(const Message& row, std::uint32_t number) const {
    if (number == 0 || number > row.highest_field) return nullptr;
    const Field* field = &fields[row.first_field + number - 1];
    return field->kind == FieldKind::kNone ? nullptr : field;
  }
  std::string_view NameOf(const Field& field) const {
    return {names + field.name, field.name_size};
  }
};

}  // namespace virtual_modem::text
