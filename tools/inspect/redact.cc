#include "inspect/redact.h"

#include <string>
#include <vector>

namespace virtual_modem::inspect {
namespace {

using google::protobuf::Reflection;

void Mask(Message& message, const FieldDescriptor* field) {
  const Reflection& reflection = *message.GetReflection();
  const int count = field->is_repeated() ? reflection.FieldSize(message, field) : 0;
  switch (field->cpp_type()) {
    case FieldDescriptor::CPPTYPE_STRING:
      for (int i = 0; i < count; ++i) {
        const std::string value = reflection.GetRepeatedString(message, field, i);
        reflection.SetRepeatedString(&message, field, i, std::string(value.size(), 'X'));
      }
      if (!field->is_repeated()) {
        const std::string value = reflection.GetString(message, field);
        reflection.SetString(&message, field, std::string(value.size(), 'X'));
      }
      break;
    case FieldDescriptor::CPPTYPE_INT32:
      for (int i = 0; i < count; ++i) reflection.SetRepeatedInt32(&message, field, i, 0);
      if (!field->is_repeated()) reflection.SetInt32(&message, field, 0);
      break;
    default:
      // No subscriber data has another type today; should one come, nothing of it may show.
      reflection.ClearField(&message, field);
  }
}

}  // namespace

void Redact(const Schema& schema, Message& message) {
  const Reflection& reflection = *message.GetReflection();
  reflection.MutableUnknownFields(&message)->Clear();
  std::vector<const FieldDescriptor*> fields;
  reflection.ListFields(message, &fields);
  for (const FieldDescriptor* field : fields) {
    if (schema.IsSubscriberData(*field)) {
      Mask(message, field);
    } else if (field->message_type() != nullptr && field->is_repeated()) {
      for (int i = 0; i < reflection.FieldSize(message, field); ++i) {
        Redact(schema, *reflection.MutableRepeatedMessage(&message, field, i));
      }
    } else if (field->message_type() != nullptr) {
      Redact(schema, *reflection.MutableMessage(&message, field));
    }
  }
}

}  // namespace virtual_modem::inspect
