#include "inspect/schema/schema_tables.h"

#include <algorithm>

#include "inspect/error.h"

namespace virtual_modem::inspect {
namespace {

using google::protobuf::Descriptor;
using google::protobuf::EnumDescriptor;
using google::protobuf::FieldDescriptor;
using text::FieldKind;

constexpr std::uint32_t kSmallNumbers = 128;

FieldKind KindOf(const FieldDescriptor& field) {
  static const std::unordered_map<int, FieldKind> kinds{
      {FieldDescriptor::TYPE_INT32, FieldKind::kInt32},
      {FieldDescriptor::TYPE_UINT32, FieldKind::kUint32},
      {FieldDescriptor::TYPE_INT64, FieldKind::kInt64},
      {FieldDescriptor::TYPE_UINT64, FieldKind::kUint64},
      {FieldDescriptor::TYPE_BOOL, FieldKind::kBool},
      {FieldDescriptor::TYPE_ENUM, FieldKind::kEnum},
      {FieldDescriptor::TYPE_STRING, FieldKind::kString},
      {FieldDescriptor::TYPE_BYTES, FieldKind::kBytes},
      {FieldDescriptor::TYPE_MESSAGE, FieldKind::kMessage}};
  const auto found = kinds.find(field.type());
  return found == kinds.end() ? FieldKind::kNone : found->second;
}

[[noreturn]] void Refuse(const FieldDescriptor& field, const std::string& why) {
  throw Error("the schema's field " + field.full_name() + " " + why +
              ", unlike any of a virtual modem");
}

}  // namespace

void SchemaTables::Fill(const std::vector<const Descriptor*>& messages,
                        const std::unordered_set<const FieldDescriptor*>& subscriber_data) {
  if (messages.size() > text::kMostTypes) throw Error("the schema has too many messages");
  for (const Descriptor* type : messages) {
    indexes_.emplace(type, static_cast<unsigned>(indexes_.size()));
  }
  for (const Descriptor* type : messages) {
    std::vector<const FieldDescriptor*> fields;
    fields.reserve(static_cast<std::size_t>(type->field_count()));
    for (int i = 0; i < type->field_count(); ++i) fields.push_back(type->field(i));
    std::sort(fields.begin(), fields.end(),
              [](const auto* a, const auto* b) { return a->number() < b->number(); });
    const std::size_t first = fields_.size();
    int dense = 0;
    for (std::size_t i = 0; i < fields.size(); ++i) {
      const int number = fields[i]->number();
      if (number <= std::min(static_cast<int>(2 * i) + 18, UINT8_MAX)) dense = number;
    }
    messages_.push_back({static_cast<std::uint16_t>(first), static_cast<std::uint16_t>(dense)});
    fields_.resize(first + static_cast<std::size_t>(dense));
    for (const FieldDescriptor* declared : fields) {
      const FieldDescriptor& field = *declared;
      text::Field row = MakeField(field);
      const bool sparse = field.number() > dense;
      const std::size_t place =
          sparse ? fields_.size() : first + static_cast<std::size_t>(field.number()) - 1;
      if (place >= UINT16_MAX) throw Error("the schema has too many fields");
      if (sparse) {
        sparse_.push_back(
            {static_cast<std::uint32_t>(field.number()), static_cast<std::uint16_t>(place)});
        fields_.emplace_back();
      } else {
        row.number = static_cast<std::uint8_t>(field.number());
      }
      row.subscriber_data = subscriber_data.count(&field) != 0;
      if (row.subscriber_data &&
          (row.kind == FieldKind::kEnum || row.kind == FieldKind::kMessage)) {
        Refuse(field, "is subscriber data that has no mask");
      }
      fields_[place] = row;
    }
  }
  messages_.push_back({static_cast<std::uint16_t>(fields_.size()), 0});
  names_.append(text::kNamePadding, '\0');
  tables_ = {messages_.data(),
             fields_.data(),
             sparse_.data(),
             sparse_.data() + sparse_.size(),
             names_.data(),
             NameOf,
             this};
}

text::Field SchemaTables::MakeField(const FieldDescriptor& field) {
  text::Field row{};
  row.kind = KindOf(field);
  if (row.kind == FieldKind::kNone) Refuse(field, std::string("is a ") + field.type_name());
  if (field.name().size() > text::kNamePadding) Refuse(field, "has a name over 32 letters");
  row.name = Place(field.name());
  row.name_size = static_cast<std::uint8_t>(field.name().size()) & 0x3FU;
  row.repeated = field.is_repeated();
  row.required = field.is_required();
  if (row.kind == FieldKind::kEnum)
    row.below = PlaceEnum(*field.enum_type()) & (text::kMostTypes - 1);
  if (row.kind == FieldKind::kMessage) {
    const auto found = indexes_.find(field.message_type());
    if (found == indexes_.end()) Refuse(field, "has a type declared within a message");
    row.below = static_cast<std::uint16_t>(found->second) & (text::kMostTypes - 1);
  }
  return row;
}

std::uint16_t SchemaTables::Place(const std::string& name) {
  const auto [found, added] = places_.emplace(name, static_cast<std::uint16_t>(names_.size()));
  if (added) names_ += name;
  if (names_.size() > UINT16_MAX) throw Error("the schema has too many names");
  return found->second;
}

std::uint16_t SchemaTables::PlaceEnum(const EnumDescriptor& type) {
  const auto [found, added] =
      enum_indexes_.emplace(&type, static_cast<std::uint16_t>(enums_.size()));
  if (!added) return found->second;
  if (enums_.size() == text::kMostTypes) throw Error("the schema has too many enumerations");
  enums_.push_back(&type);
  std::vector<std::string_view>& small = small_names_.emplace_back(kSmallNumbers);
  for (int i = 0; i < type.value_count(); ++i) {
    const auto number = static_cast<std::uint32_t>(type.value(i)->number());
    if (number < kSmallNumbers && small[number].empty()) small[number] = type.value(i)->name();
  }
  return found->second;
}

std::string_view SchemaTables::NameOf(const void* context, unsigned enumeration,
                                      std::int32_t number) {
  const auto* tables = static_cast<const SchemaTables*>(context);
  if (static_cast<std::uint32_t>(number) < kSmallNumbers) {
    return tables->small_names_[enumeration][static_cast<std::uint32_t>(number)];
  }
  const auto* value = tables->enums_[enumeration]->FindValueByNumber(number);
  return value == nullptr ? std::string_view() : value->name();
}

}  // namespace virtual_modem::inspect
