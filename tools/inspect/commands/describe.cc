// describe and list: the schema with its comments, for people.
#include <google/protobuf/descriptor.h>
#include <google/protobuf/wire_format.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <iostream>
#include <optional>
#include <string>
#include <vector>

#include "inspect/commands/commands.h"
#include "inspect/error.h"
#include "inspect/read/hex.h"

namespace virtual_modem::inspect {
namespace {

using google::protobuf::EnumValueDescriptor;

// The declaration as the schema has it, with tag and comment.
void PrintFieldLine(const FieldDescriptor& field) {
  const std::string tag = Varint(google::protobuf::internal::WireFormat::MakeTag(&field));
  std::cout << "  " << LabelOf(field) << ' ' << TypeOf(field) << ' ' << field.name() << " = "
            << field.number() << "  tag " << ToHex(tag) << '\n';
  const std::string comment = Comment(field);
  if (!comment.empty()) std::cout << "      " << comment << '\n';
}

void PrintMessage(const Schema& schema, const Descriptor& type) {
  std::cout << "message " << type.full_name() << "  (unit " << UnitOf(*type.file()) << ")\n  "
            << Comment(type) << '\n';
  for (const TypeInfo& other : schema.types()) {
    if (other.type != &type && SameLayout(*other.type, type)) {
      std::cout << "  Same bytes as " << other.type->full_name() << ".\n";
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
  for (const FieldDescriptor* field : schema.fields()) {
    if (field->enum_type() == &type) std::cout << "  Type of " << field->full_name() << ".\n";
  }
  std::cout << '\n';
  for (int i = 0; i < type.value_count(); ++i) {
    const EnumValueDescriptor& value = *type.value(i);
    std::cout << "  " << value.number() << "  " << value.name() << "  " << Comment(value) << '\n';
  }
}

void PrintValue(const EnumValueDescriptor& value) {
  std::cout << value.type()->name() << ": " << value.name() << " = " << value.number()
            << "  on the wire " << ToHex(Varint(static_cast<std::uint64_t>(value.number())))
            << '\n';
  const std::string comment = Comment(value);
  if (!comment.empty()) std::cout << "      " << comment << '\n';
}

// Decimal or 0x hex, with or without a sign.
std::optional<std::int32_t> ParseNumber(const std::string& text) {
  const bool hex = text.find_first_of("xX") != std::string::npos;
  char* end = nullptr;
  const std::int64_t value = std::strtoll(text.c_str(), &end, hex ? 16 : 10);
  if (text.empty() || *end != '\0' || value < INT32_MIN || value > INT32_MAX) return std::nullopt;
  return static_cast<std::int32_t>(value);
}

// Prints the values of that name or number; false when there is none.
bool PrintValues(const std::vector<const EnumDescriptor*>& types, const std::string& name) {
  const std::optional<std::int32_t> number = ParseNumber(name);
  bool found = false;
  for (const EnumDescriptor* type : types) {
    const EnumValueDescriptor* value =
        number ? type->FindValueByNumber(*number) : type->FindValueByName(name);
    if (value == nullptr) continue;
    PrintValue(*value);
    found = true;
  }
  return found;
}

// A path such as IccCardStatusResponse.cardstatus.base or, as findings have it, calls[0].number
// after its type.
const FieldDescriptor* FindPath(const Schema& schema, std::string path) {
  for (std::size_t open = path.find('['); open != std::string::npos; open = path.find('[')) {
    const std::size_t close = path.find(']', open);
    if (close == std::string::npos) return nullptr;
    path.erase(open, close - open + 1);
  }
  // The type may have a package, with dots of its own.
  for (std::size_t dot = path.find('.'); dot != std::string::npos; dot = path.find('.', dot + 1)) {
    const TypeInfo* type = schema.FindType(path.substr(0, dot));
    if (type != nullptr) return FindField(*type->type, path.substr(dot + 1));
  }
  return nullptr;
}

// A field name without its message, or a value: in any message or enumeration.
bool DescribeBareName(const Schema& schema, const std::string& name) {
  bool found = false;
  for (const FieldDescriptor* field : schema.fields()) {
    if (field->name() != name) continue;
    PrintField(*field);
    found = true;
  }
  return PrintValues(schema.enums(), name) || found;
}

bool DescribeName(const Schema& schema, const std::string& name) {
  if (const TypeInfo* message = schema.FindType(name)) {
    PrintMessage(schema, *message->type);
  } else if (const EnumDescriptor* type = schema.FindEnum(name)) {
    PrintEnum(schema, *type);
  } else if (const FieldDescriptor* field = FindPath(schema, name)) {
    PrintField(*field);
  } else {
    return DescribeBareName(schema, name);
  }
  return true;
}

// The enumerations that a word of a log can mean: by their own name or that of a field, or by a
// part of either.
std::vector<const EnumDescriptor*> FindEnums(const Schema& schema, const std::string& name,
                                             bool by_part) {
  if (const EnumDescriptor* type = schema.FindEnum(name)) return {type};
  std::vector<const EnumDescriptor*> types;
  if (const FieldDescriptor* field = FindPath(schema, name)) {
    if (field->enum_type() != nullptr) types.push_back(field->enum_type());
    return types;
  }
  const std::string wanted = Lower(name);
  const auto add = [&](const std::string& called, const EnumDescriptor* type) {
    const bool fits = by_part ? called.find(wanted) != std::string::npos : called == wanted;
    if (fits && std::find(types.begin(), types.end(), type) == types.end()) types.push_back(type);
  };
  for (const EnumDescriptor* type : schema.enums()) add(Lower(type->name()), type);
  for (const FieldDescriptor* field : schema.fields()) {
    if (field->enum_type() != nullptr) add(field->name(), field->enum_type());
  }
  return types;
}

// A name with a value: cause 17, Dial.clir=2, error: RADIO_E_SIM_BUSY. False when there is no such
// name; throws Error when the name has no such value.
bool DescribePair(const Schema& schema, const std::string& name, const std::string& value) {
  if (PrintValues(FindEnums(schema, name, false), value)) return true;
  const std::vector<const EnumDescriptor*> types = FindEnums(schema, name, true);
  if (PrintValues(types, value)) return true;
  if (types.empty()) return DescribeName(schema, name);  // a field whose numbers have no names
  std::vector<std::string> names;
  for (const EnumDescriptor* type : types) {
    for (int i = 0; i < type->value_count(); ++i) names.push_back(type->value(i)->name());
  }
  throw Error(value +
              (types.size() == 1 ? " is not a value of " + types.front()->full_name()
                                 : " is not a value of any of the " + std::to_string(types.size()) +
                                       " enumerations that " + name + " can be") +
              (ParseNumber(value) ? "" : DidYouMean(value, names)));
}

void PrintOverview(const Schema& schema) {
  const google::protobuf::FileDescriptor* unit = nullptr;
  for (const TypeInfo& each : schema.types()) {
    if (each.type->file() == unit) continue;
    unit = each.type->file();
    std::cout << UnitOf(*unit) << ": " << unit->message_type_count() << " messages, "
              << unit->enum_type_count() << " enumerations\n";
  }
}

// Those that the name given can be meant for: after a dot a field of a message, else anything.
std::vector<std::string> NamesLike(const Schema& schema, const std::string& name) {
  const bool path = name.find('.') != std::string::npos;
  std::vector<std::string> names;
  for (const TypeInfo& each : schema.types()) names.push_back(each.type->name());
  for (const FieldDescriptor* field : schema.fields()) {
    names.push_back((path ? field->containing_type()->name() + "." : "") + field->name());
  }
  if (path) return names;
  for (const EnumDescriptor* type : schema.enums()) {
    names.push_back(type->name());
    for (int i = 0; i < type->value_count(); ++i) names.push_back(type->value(i)->name());
  }
  return names;
}

}  // namespace

Status DescribeCommand(Schema& schema, const Options& options) {
  std::string what;
  for (const std::string& word : options.words) what += (what.empty() ? "" : " ") + word;
  if (what.empty()) {
    PrintOverview(schema);
    return kOk;
  }
  if (DescribeName(schema, what)) return kOk;
  if (ParseNumber(what)) {
    throw Error(what + " is not a value of any of the " + std::to_string(schema.enums().size()) +
                " enumerations");
  }
  constexpr std::string_view kBetween = " =:,;";
  const std::string name = what.substr(0, what.find_first_of(kBetween));
  const std::size_t begin = what.find_first_not_of(kBetween, name.size());
  const std::size_t end = what.find_last_not_of(kBetween) + 1;
  if (begin < end && !name.empty() && DescribePair(schema, name, what.substr(begin, end - begin))) {
    return kOk;
  }
  const std::string unknown = begin < end ? name : what;
  throw Error("nothing is called " + unknown + DidYouMean(unknown, NamesLike(schema, unknown)));
}

Status ListCommand(Schema& schema, const Options& options) {
  const std::string& what = options.list;
  // With the first sentence of its comment, or sentence part.
  const auto print = [](const auto& declaration) {
    const std::string comment = Comment(declaration);
    std::cout << declaration.full_name() << "  " << UnitOf(*declaration.file()) << "  "
              << comment.substr(0, comment.find_first_of(".;:")) << '\n';
  };
  if (what == "enums" || what == "values") {
    for (const EnumDescriptor* type : schema.enums()) {
      if (what == "enums") print(*type);
      for (int i = 0; what == "values" && i < type->value_count(); ++i) print(*type->value(i));
    }
  } else {
    for (const TypeInfo& each : schema.types()) {
      if (what == "messages") print(*each.type);
    }
    for (const FieldDescriptor* field : schema.fields()) {
      if (what == "fields") print(*field);
    }
  }
  return kOk;
}

}  // namespace virtual_modem::inspect
