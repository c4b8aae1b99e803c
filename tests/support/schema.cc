#include "support/schema.h"

#include <map>

#include "support/message_types.h"

namespace virtual_modem::testing {
namespace {

struct FieldRow {
  std::string_view message;
  FieldSchema field;
};

struct ValueRow {
  std::string_view enumeration;
  EnumValue value;
};

#define FIELD(message, number, name, label, kind, type, subscriber_data) \
  {message, {number, name, Label::label, Kind::kind, type, subscriber_data}},
#define VALUE(enumeration, name, number)
constexpr FieldRow kFields[] = {
#include "schema_table.inc"
};
#undef FIELD
#undef VALUE

#define FIELD(message, number, name, label, kind, type, subscriber_data)
#define VALUE(enumeration, name, number) {enumeration, {name, number}},
constexpr ValueRow kValues[] = {
#include "schema_table.inc"
};
#undef FIELD
#undef VALUE

}  // namespace

const MessageSchema& SchemaOf(std::string_view message) {
  static const auto messages = [] {
    std::map<std::string_view, MessageSchema> all;
    for (const MessageType& type : AllMessageTypes()) all[type.name].name = type.name;
    for (const FieldRow& row : kFields) all[row.message].fields.push_back(row.field);
    return all;
  }();
  return messages.at(message);
}

const EnumSchema& SchemaOfEnum(std::string_view enumeration) {
  static const auto enums = [] {
    std::map<std::string_view, EnumSchema> all;
    for (const ValueRow& row : kValues) all[row.enumeration].values.push_back(row.value);
    return all;
  }();
  return enums.at(enumeration);
}

}  // namespace virtual_modem::testing
