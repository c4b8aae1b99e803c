#include "support/schema.h"

#include <map>

#include "support/message_types.h"

namespace virtual_modem::testing {
namespace {

struct FieldRow {
  std::string_view message;
  FieldSchema field;
};

struct SampleRow {
  std::string_view message;
  std::string_view MessageSchema::*kind;
  std::string_view bytes;
};

#define FIELD(message, number, name, label, kind, type, subscriber_data) \
  {message, {number, name, Label::label, Kind::kind, type, subscriber_data}},
#define SAMPLE(message, kind, size, bytes)
constexpr FieldRow kFields[] = {
#include "schema_table.inc"
};
#undef FIELD
#undef SAMPLE

#define FIELD(message, number, name, label, kind, type, subscriber_data)
#define SAMPLE(message, kind, size, bytes) {message, &MessageSchema::kind, {bytes, size}},
constexpr SampleRow kSamples[] = {
#include "schema_table.inc"
};
#undef FIELD
#undef SAMPLE

}  // namespace

const MessageSchema& SchemaOf(std::string_view message) {
  static const auto messages = [] {
    std::map<std::string_view, MessageSchema> all;
    for (const MessageType& type : AllMessageTypes()) all[type.name].name = type.name;
    for (const FieldRow& row : kFields) all[row.message].fields.push_back(row.field);
    for (const SampleRow& row : kSamples) all[row.message].*row.kind = row.bytes;
    return all;
  }();
  return messages.at(message);
}

}  // namespace virtual_modem::testing
