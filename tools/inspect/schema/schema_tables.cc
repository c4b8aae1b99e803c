// The tables of the walk over encoded bytes, filled from the schema at run time.
#include <algorithm>
#include <map>

#include "inspect/error.h"
#include "inspect/schema/schema.h"

namespace virtual_modem::inspect {
namespace {

using text::FieldKind;

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

class StoredTables : public text::Tables {
 public:
  explicit StoredTables(const Schema& schema) {
    if (schema.types().size() > text::kMostTypes) throw Error("the schema has too many messages");
    for (const TypeInfo& each : schema.types()) indexes_.emplace(each.type, each.index);
    for (const TypeInfo& each : schema.types()) AddMessage(schema, *each.type);
    messages_.push_back({static_cast<std::uint16_t>(fields_.size()), 0});
    names_.append(text::kNamePadding, '\0');
    messages = messages_.data();
    fields = fields_.data();
    sparse = sparse_.data();
    sparse_end = sparse + sparse_.size();
    names = names_.data();
    enum_name = NameOf;
    context = this;
  }

 private:
  static std::string_view NameOf(const void* context, unsigned enumeration, std::int32_t number) {
    const EnumDescriptor& type = *static_cast<const StoredTables*>(context)->enums_[enumeration];
    // Most values stand at the place of their number; for others the runtime searches.
    const bool in_place =
        number >= 0 && number < type.value_count() && type.value(number)->number() == number;
    const auto* value = in_place ? type.value(number) : type.FindValueByNumber(number);
    return value == nullptr ? std::string_view() : value->name();
  }

  void AddMessage(const Schema& schema, const Descriptor& type) {
    std::map<int, text::Field> rows;  // by number
    for (int i = 0; i < type.field_count(); ++i) {
      rows.emplace(type.field(i)->number(), MakeField(schema, *type.field(i)));
    }
    const std::size_t first = fields_.size();
    int count = 0;
    int dense = 0;
    for (const auto& [number, row] : rows) {
      if (number <= std::min(2 * count++ + 18, UINT8_MAX)) dense = number;
    }
    messages_.push_back({static_cast<std::uint16_t>(first), static_cast<std::uint16_t>(dense)});
    fields_.resize(first + static_cast<std::size_t>(dense));
    for (auto& [number, row] : rows) {
      if (number <= dense) {
        row.number = static_cast<std::uint8_t>(number);
        fields_[first + row.number - 1] = row;
      } else {
        sparse_.push_back(
            {static_cast<std::uint32_t>(number), static_cast<std::uint16_t>(fields_.size())});
        fields_.push_back(row);
      }
    }
    if (fields_.size() > UINT16_MAX) throw Error("the schema has too many fields");
  }

  text::Field MakeField(const Schema& schema, const FieldDescriptor& field) {
    text::Field row{};
    row.kind = KindOf(field);
    if (row.kind == FieldKind::kNone) Refuse(field, std::string("is a ") + field.type_name());
    if (field.name().size() > text::kNamePadding) Refuse(field, "has a name over 32 letters");
    row.name = Place(field.name());
    row.name_size = static_cast<std::uint8_t>(field.name().size()) & 0x3FU;
    row.repeated = field.is_repeated();
    row.required = field.is_required();
    row.subscriber_data = schema.IsSubscriberData(field);
    if (row.kind != FieldKind::kEnum && row.kind != FieldKind::kMessage) return row;
    if (row.subscriber_data) Refuse(field, "is subscriber data that has no mask");
    const void* type = field.message_type();
    if (row.kind == FieldKind::kEnum) {
      type = field.enum_type();
      if (indexes_.emplace(type, enums_.size()).second) enums_.push_back(field.enum_type());
      if (enums_.size() > text::kMostTypes) throw Error("the schema has too many enumerations");
    }
    const auto found = indexes_.find(type);
    if (found == indexes_.end()) Refuse(field, "has a type declared within a message");
    row.below = static_cast<std::uint16_t>(found->second) & (text::kMostTypes - 1);
    return row;
  }

  std::uint16_t Place(const std::string& name) {
    const auto [found, added] = places_.emplace(name, static_cast<std::uint16_t>(names_.size()));
    if (added) names_ += name;
    if (names_.size() > UINT16_MAX) throw Error("the schema has too many names");
    return found->second;
  }

  std::vector<text::Message> messages_;
  std::vector<text::Field> fields_;
  std::vector<text::SparseNumber> sparse_;
  std::string names_;
  std::vector<const EnumDescriptor*> enums_;
  std::unordered_map<const void*, unsigned> indexes_;  // of messages, and of enumerations
  std::unordered_map<std::string, std::uint16_t> places_;
};

}  // namespace

std::shared_ptr<const text::Tables> MakeTables(const Schema& schema) {
  return std::make_shared<StoredTables>(schema);
}

}  // namespace virtual_modem::inspect
