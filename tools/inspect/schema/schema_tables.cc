// The tables of the walk over encoded bytes, filled from the schema at run time.
#include <algorithm>

#include "inspect/error.h"
#include "inspect/schema/schema.h"

namespace virtual_modem::inspect {
namespace {

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

class StoredTables : public text::Tables {
 public:
  StoredTables(const std::vector<TypeInfo>& types,
               const std::unordered_set<const FieldDescriptor*>& subscriber_data) {
    if (types.size() > text::kMostTypes) throw Error("the schema has too many messages");
    for (const TypeInfo& each : types) indexes_.emplace(each.type, each.index);
    for (const TypeInfo& each : types) {
      std::vector<const FieldDescriptor*> declared;
      for (int i = 0; i < each.type->field_count(); ++i) declared.push_back(each.type->field(i));
      std::sort(declared.begin(), declared.end(),
                [](const auto* a, const auto* b) { return a->number() < b->number(); });
      const std::size_t first = fields_.size();
      int dense = 0;
      for (std::size_t i = 0; i < declared.size(); ++i) {
        const int number = declared[i]->number();
        if (number <= std::min(static_cast<int>(2 * i) + 18, UINT8_MAX)) dense = number;
      }
      messages_.push_back({static_cast<std::uint16_t>(first), static_cast<std::uint16_t>(dense)});
      fields_.resize(first + static_cast<std::size_t>(dense));
      for (const FieldDescriptor* field : declared) {
        text::Field row = MakeField(*field);
        row.subscriber_data = subscriber_data.count(field) != 0;
        if (row.subscriber_data &&
            (row.kind == FieldKind::kEnum || row.kind == FieldKind::kMessage)) {
          Refuse(*field, "is subscriber data that has no mask");
        }
        const auto number = static_cast<std::uint32_t>(field->number());
        if (field->number() <= dense) {
          row.number = static_cast<std::uint8_t>(number);
          fields_[first + number - 1] = row;
        } else {
          sparse_.push_back({number, static_cast<std::uint16_t>(fields_.size())});
          fields_.push_back(row);
        }
        if (fields_.size() > UINT16_MAX) throw Error("the schema has too many fields");
      }
    }
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
    const auto* tables = static_cast<const StoredTables*>(context);
    if (static_cast<std::uint32_t>(number) < kSmallNumbers) {
      return tables->small_names_[enumeration][static_cast<std::uint32_t>(number)];
    }
    const auto* value = tables->enums_[enumeration]->FindValueByNumber(number);
    return value == nullptr ? std::string_view() : value->name();
  }

  text::Field MakeField(const FieldDescriptor& field) {
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

  std::uint16_t Place(const std::string& name) {
    const auto [found, added] = places_.emplace(name, static_cast<std::uint16_t>(names_.size()));
    if (added) names_ += name;
    if (names_.size() > UINT16_MAX) throw Error("the schema has too many names");
    return found->second;
  }

  std::uint16_t PlaceEnum(const EnumDescriptor& type) {
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

  std::vector<text::Message> messages_;
  std::vector<text::Field> fields_;
  std::vector<text::SparseNumber> sparse_;
  std::string names_;
  std::vector<const EnumDescriptor*> enums_;
  // The names of the numbers from 0 of each: most values are small, and the runtime searches for
  // them.
  std::vector<std::vector<std::string_view>> small_names_;
  std::unordered_map<const Descriptor*, unsigned> indexes_;
  std::unordered_map<const EnumDescriptor*, std::uint16_t> enum_indexes_;
  std::unordered_map<std::string, std::uint16_t> places_;
};

}  // namespace

std::shared_ptr<const text::Tables> MakeTables(
    const std::vector<TypeInfo>& types,
    const std::unordered_set<const FieldDescriptor*>& subscriber_data) {
  return std::make_shared<StoredTables>(types, subscriber_data);
}

}  // namespace virtual_modem::inspect
