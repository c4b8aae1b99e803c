#include "inspect/show/skeleton.h"

#include <google/protobuf/descriptor.h>

namespace virtual_modem::inspect {
namespace {

std::string FirstValue(const FieldDescriptor& field) {
  switch (field.cpp_type()) {
    case FieldDescriptor::CPPTYPE_STRING:
      return "\"\"";
    case FieldDescriptor::CPPTYPE_BOOL:
      return "false";
    case FieldDescriptor::CPPTYPE_ENUM:
      return field.enum_type()->value(0)->name();
    default:
      return "0";
  }
}

// The values of an enumeration that are few enough to be chosen from.
std::string Choice(const FieldDescriptor& field) {
  constexpr int kMaxValues = 8;
  if (field.enum_type() == nullptr) return "";
  if (field.enum_type()->value_count() > kMaxValues) return " " + field.enum_type()->name();
  std::string values = ":";
  for (int i = 0; i < field.enum_type()->value_count(); ++i) {
    values += (i == 0 ? " " : ", ") + field.enum_type()->value(i)->name();
  }
  return values;
}

void Append(const Descriptor& type, const std::string& indent, std::string& text) {
  for (int i = 0; i < type.field_count(); ++i) {
    const FieldDescriptor& field = *type.field(i);
    const std::string note =
        std::string(field.is_repeated() ? "repeated" : "optional") +
        (field.message_type() != nullptr ? " " + field.message_type()->name() : Choice(field));
    if (!field.is_required()) {
      const bool message = field.message_type() != nullptr;
      text += indent;
      text += "# " + field.name();
      text += message ? " {}" : ": " + FirstValue(field);
      text += "  # " + note + "\n";
    } else if (field.message_type() != nullptr) {
      text += indent + field.name() + " {\n";
      Append(*field.message_type(), indent + "  ", text);
      text += indent + "}\n";
    } else {
      const std::string choice = Choice(field);
      text += indent + field.name() + ": " + FirstValue(field);
      if (!choice.empty()) text += "  #" + choice.substr(choice[0] == ':' ? 1 : 0);
      text += "\n";
    }
  }
}

}  // namespace

std::string Skeleton(const Descriptor& type) {
  std::string text;
  Append(type, "", text);
  return text;
}

}  // namespace virtual_modem::inspect
