// describe and list: the schema with its comments, for people.
#include <google/protobuf/descriptor.h>
#include <google/protobuf/io/coded_stream.h>
#include <google/protobuf/wire_format.h>

#include <charconv>
#include <cstdint>
#include <iostream>
#include <optional>
#include <sstream>
#include <string>
#include <vector>

#include "inspect/commands.h"
#include "inspect/error.h"
#include "inspect/hex.h"

namespace virtual_modem::inspect {
namespace {

using google::protobuf::EnumValueDescriptor;

// The comment of a declaration as one line.
template <typename Declaration>
std::string Comment(const Declaration& declaration) {
  google::protobuf::SourceLocation location;
  if (!declaration.GetSourceLocation(&location)) return "";
  std::istringstream words(location.leading_comments + " " + location.trailing_comments);
  std::string comment;
  std::string word;
  while (words >> word) comment += (comment.empty() ? "" : " ") + word;
  return comment;
}

// Its first sentence, or sentence part.
template <typename Declaration>
std::string Headline(const Declaration& declaration) {
  const std::string comment = Comment(declaration);
  return comment.substr(0, comment.find_first_of(".;:"));
}

std::string VarintBytes(std::uint64_t value) {
  std::string bytes(10, '\0');
  auto* data = reinterpret_cast<std::uint8_t*>(bytes.data());
  const std::uint8_t* end =
      google::protobuf::io::CodedOutputStream::WriteVarint64ToArray(value, data);
  return ToHex(bytes.substr(0, static_cast<std::size_t>(end - data)));
}

// The bytes before each value of the field, in hex.
std::string TagBytes(const FieldDescriptor& field) {
  return VarintBytes(google::protobuf::internal::WireFormat::MakeTag(&field));
}

std::string TypeName(const FieldDescriptor& field) {
  if (field.message_type() != nullptr) return field.message_type()->full_name();
  if (field.enum_type() != nullptr) return field.enum_type()->full_name();
  return field.type_name();
}

const char* Label(const FieldDescriptor& field) {
  if (field.is_required()) return "required";
  return field.is_repeated() ? "repeated" : "optional";
}

// The declaration as the schema has it, with tag and comment.
void PrintFieldLine(const FieldDescriptor& field) {
  std::cout << "  " << Label(field) << ' ' << TypeName(field) << ' ' << field.name() << " = "
            << field.number() << "  tag " << TagBytes(field) << '\n';
  const std::string comment = Comment(field);
  if (!comment.empty()) std::cout << "      " << comment << '\n';
}

void PrintMessage(const Schema& schema, const Descriptor& type) {
  std::cout << "message " << type.full_name() << "  (unit " << UnitOf(*type.file()) << ")\n  "
            << Comment(type) << '\n';
  for (const Descriptor* other : schema.messages()) {
    if (other != &type && SameLayout(*other, type)) {
      std::cout << "  Same bytes as " << other->full_name() << ".\n";
    }
  }
  std::cout << '\n';
  for (int i = 0; i < type.field_count(); ++i) PrintFieldLine(*type.field(i));
}

void PrintField(const FieldDescriptor& field) {
  std::cout << "field " << field.full_name() << '\n';
  PrintFieldLine(field);
}

void PrintEnum(const Schema& schema, const EnumDescriptor& type) {
  std::cout << "enum " << type.full_name() << "  (unit " << UnitOf(*type.file()) << ")\n  "
            << Comment(type) << '\n';
  for (const Descriptor* message : schema.messages()) {
    for (int i = 0; i < message->field_count(); ++i) {
      const FieldDescriptor& field = *message->field(i);
      if (field.enum_type() == &type) std::cout << "  Type of " << field.full_name() << ".\n";
    }
  }
  std::cout << '\n';
  for (int i = 0; i < type.value_count(); ++i) {
    const EnumValueDescriptor& value = *type.value(i);
    std::cout << "  " << value.number() << "  " << value.name() << "  " << Comment(value) << '\n';
  }
}

void PrintValue(const EnumValueDescriptor& value) {
  std::cout << value.type()->name() << ": " << value.name() << " = " << value.number()
            << "  on the wire " << VarintBytes(static_cast<std::uint64_t>(value.number())) << '\n';
  const std::string comment = Comment(value);
  if (!comment.empty()) std::cout << "      " << comment << '\n';
}

// Decimal or 0x hex, with or without a sign.
std::optional<std::int32_t> ParseNumber(std::string_view text) {
  const bool negative = !text.empty() && text.front() == '-';
  if (negative) text.remove_prefix(1);
  const bool hex = text.substr(0, 2) == "0x" || text.substr(0, 2) == "0X";
  if (hex) text.remove_prefix(2);
  std::int32_t number = 0;
  const char* end = text.data() + text.size();
  const auto result = std::from_chars(text.data(), end, number, hex ? 16 : 10);
  if (text.empty() || result.ec != std::errc() || result.ptr != end) return std::nullopt;
  return negative ? -number : number;
}

bool DescribeNumber(const Schema& schema, std::int32_t number) {
  bool found = false;
  for (const EnumDescriptor* type : schema.enums()) {
    const EnumValueDescriptor* value = type->FindValueByNumber(number);
    if (value == nullptr) continue;
    PrintValue(*value);
    found = true;
  }
  return found;
}

// A path such as IccCardStatusResponse.cardstatus.base or, as findings have it, calls[0].number
// behind its type.
const FieldDescriptor* FindPath(const Schema& schema, std::string path) {
  for (std::size_t open = path.find('['); open != std::string::npos; open = path.find('[')) {
    path.erase(open, path.find(']', open) - open + 1);
  }
  // The type may have a package, with dots of its own.
  for (std::size_t dot = path.find('.'); dot != std::string::npos; dot = path.find('.', dot + 1)) {
    const Descriptor* type = schema.FindMessage(path.substr(0, dot));
    if (type == nullptr) continue;
    const FieldDescriptor* field = nullptr;
    std::istringstream steps(path.substr(dot + 1));
    for (std::string step; std::getline(steps, step, '.');) {
      field = type != nullptr ? type->FindFieldByName(step) : nullptr;
      if (field == nullptr) return nullptr;
      type = field->message_type();
    }
    return field;
  }
  return nullptr;
}

// A field name without its message, or a value name: in any message or enumeration.
bool DescribeBareName(const Schema& schema, const std::string& name) {
  bool found = false;
  for (const Descriptor* message : schema.messages()) {
    const FieldDescriptor* field = message->FindFieldByName(name);
    if (field == nullptr) continue;
    PrintField(*field);
    found = true;
  }
  for (const EnumDescriptor* type : schema.enums()) {
    const EnumValueDescriptor* value = type->FindValueByName(name);
    if (value == nullptr) continue;
    PrintValue(*value);
    found = true;
  }
  return found;
}

void PrintOverview(const Schema& schema) {
  const google::protobuf::FileDescriptor* unit = nullptr;
  for (const Descriptor* message : schema.messages()) {
    if (message->file() == unit) continue;
    unit = message->file();
    std::cout << UnitOf(*unit) << ": " << unit->message_type_count() << " messages, "
              << unit->enum_type_count() << " enumerations\n";
  }
}

std::vector<std::string> AllNames(const Schema& schema) {
  std::vector<std::string> names;
  for (const Descriptor* message : schema.messages()) {
    names.push_back(message->name());
    for (int i = 0; i < message->field_count(); ++i) names.push_back(message->field(i)->name());
  }
  for (const EnumDescriptor* type : schema.enums()) {
    names.push_back(type->name());
    for (int i = 0; i < type->value_count(); ++i) names.push_back(type->value(i)->name());
  }
  return names;
}

}  // namespace

Status DescribeCommand(const Schema& schema, const std::string& what) {
  if (what.empty()) {
    PrintOverview(schema);
  } else if (const Descriptor* message = schema.FindMessage(what)) {
    PrintMessage(schema, *message);
  } else if (const EnumDescriptor* type = schema.FindEnum(what)) {
    PrintEnum(schema, *type);
  } else if (const FieldDescriptor* field = FindPath(schema, what)) {
    PrintField(*field);
  } else if (const auto number = ParseNumber(what)) {
    if (!DescribeNumber(schema, *number)) {
      throw Error(what + " is a value of none of the " + std::to_string(schema.enums().size()) +
                  " enumerations");
    }
  } else if (!DescribeBareName(schema, what)) {
    throw Error("nothing is called " + what + DidYouMean(what, AllNames(schema)));
  }
  return kOk;
}

Status ListCommand(const Schema& schema, const std::string& what) {
  const auto print = [](const auto& declaration) {
    std::cout << declaration.full_name() << "  " << UnitOf(*declaration.file()) << "  "
              << Headline(declaration) << '\n';
  };
  if (what == "enums" || what == "values") {
    for (const EnumDescriptor* type : schema.enums()) {
      if (what == "enums") print(*type);
      for (int i = 0; what == "values" && i < type->value_count(); ++i) print(*type->value(i));
    }
  } else {
    for (const Descriptor* type : schema.messages()) {
      if (what == "messages") print(*type);
      for (int i = 0; what == "fields" && i < type->field_count(); ++i) print(*type->field(i));
    }
  }
  return kOk;
}

}  // namespace virtual_modem::inspect
