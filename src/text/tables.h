// The schema as numbers, for the walk over encoded bytes: which fields a message has, how each is
// called and read, and which are subscriber data. Free of the protobuf runtime, so that programs of
// the lite and of the full one can both compile it in: libvirtual-modem-text has the tables that
// the build generates, the inspector fills them from its descriptor pool.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace virtual_modem::text {

enum class FieldKind : std::uint8_t {
  kNone,  // a number that the message does not declare
  kInt32,
  kUint32,
  kInt64,
  kUint64,
  kBool,
  kEnum,
  kString,
  kBytes,
  kMessage,
};

inline constexpr unsigned kNamePadding = 32;

// A row of eight bytes is found faster than one of six; built for size, it is six.
#ifdef __OPTIMIZE_SIZE__
struct Field {
#else
struct alignas(8) Field {
#endif
  std::uint16_t name;        // offset into Tables::names
  std::uint16_t below : 11;  // kMessage: index into Tables::messages; kEnum: of the enumeration
  FieldKind kind : 4;
  bool repeated : 1;
  std::uint8_t name_size : 6;  // bytes, at most kNamePadding
  bool required : 1;
  bool subscriber_data : 1;  // only of strings, bytes and integers
  std::uint8_t number;       // 0 when it stands in Tables::sparse
};
inline constexpr unsigned kMostTypes = 1U << 11U;  // messages, or enumerations: Field::below

// The rows of a message in Tables::fields reach up to those of the next message: one for each
// number up to the last dense one, then one for each declared number beyond.
struct Message {
  std::uint16_t first_field;
  std::uint16_t last_dense;  // at most 255: Field::number
};

struct SparseNumber {
  std::uint32_t number;
  std::uint16_t row;  // in Tables::fields
};

struct Tables {
  const Message* messages;  // one more than there are, for the end of the last one's rows
  const Field* fields;
  const SparseNumber* sparse;  // in the order of the rows, as of the numbers of a message
  const SparseNumber* sparse_end;
  const char* names;  // readable for kNamePadding bytes from the beginning of each
  // The name of a number of an enumeration, empty when it is not declared.
  std::string_view (*enum_name)(const void* context, unsigned enumeration, std::int32_t number);
  const void* context;  // for enum_name

  // Null when the message does not declare the number.
  const Field* Find(const Message& row, std::uint32_t number) const {
    if (number - 1 >= row.last_dense) return FindSparse(row, number);
    const Field* field = &fields[row.first_field + number - 1];
    return field->kind == FieldKind::kNone ? nullptr : field;
  }
  std::uint32_t NumberOf(const Field& field) const {
    return field.number != 0 ? field.number : FirstSparse(&field - fields)->number;
  }
  // The rows of a message, in the order of their numbers; those of kind kNone declare none.
  const Field* Begin(const Message& row) const { return &fields[row.first_field]; }
  const Field* End(const Message& row) const { return &fields[(&row)[1].first_field]; }
  std::string_view NameOf(const Field& field) const {
    return {names + field.name, field.name_size};
  }

 private:
  const Field* FindSparse(const Message& row, std::uint32_t number) const;
  // That of the row, or of the next one that has one.
  const SparseNumber* FirstSparse(std::ptrdiff_t row) const;
};

}  // namespace virtual_modem::text
