#include "inspect/examine/glance.h"

#include <charconv>

#include "inspect/error.h"
#include "inspect/examine/findings.h"

namespace virtual_modem::inspect {
namespace {

class Looker : public text::Handler {
 public:
  Looker(const text::Tables& tables, const TypeInfo& type, const FieldCondition* condition,
         Glance& glance)
      : tables_(tables), type_(type), condition_(condition), glance_(glance) {}

  void Number(const text::Level& level, const text::Field& field, std::uint64_t value) {
    if (level.above == nullptr &&
        tables_.NumberOf(field) == static_cast<std::uint32_t>(type_.serial)) {
      glance_.serial = static_cast<std::int32_t>(value);
    }
    const FieldCondition* asked = Asked(level, field);
    if (asked != nullptr && asked->Is(field, value)) glance_.has_field = true;
  }
  void Enum(const text::Level& level, const text::Field& field, std::uint64_t value,
            std::string_view name) {
    if (IsError(level, field)) glance_.error = name;
    const FieldCondition* asked = Asked(level, field);
    if (asked != nullptr && (asked->Is(name) || asked->Is(field, value))) glance_.has_field = true;
  }
  void String(const text::Level& level, const text::Field& field, std::string_view bytes) {
    const FieldCondition* asked = Asked(level, field);
    if (asked != nullptr && asked->Is(bytes)) glance_.has_field = true;
  }
  void Unknown(const text::Level& level, const text::Field* field, std::uint32_t /*number*/,
               text::WireType type, std::string_view /*whole*/, std::string_view value) {
    if (field == nullptr || field->kind != text::FieldKind::kEnum || type != text::kVarint) return;
    const std::uint64_t number = NumberIn(value);
    if (IsError(level, *field)) glance_.error = std::to_string(static_cast<std::int32_t>(number));
    const FieldCondition* asked = Asked(level, *field);
    if (asked != nullptr && asked->Is(*field, number)) glance_.has_field = true;
  }

 private:
  bool IsError(const text::Level& level, const text::Field& field) const {
    return level.above == nullptr && type_.error != nullptr &&
           tables_.NumberOf(field) == static_cast<std::uint32_t>(type_.error->number());
  }
  // The condition, if it is about the field.
  const FieldCondition* Asked(const text::Level& level, const text::Field& field) const {
    return condition_ != nullptr && condition_->Names(tables_, level, field) ? condition_ : nullptr;
  }

  const text::Tables& tables_;
  const TypeInfo& type_;
  const FieldCondition* condition_;
  Glance& glance_;
};

}  // namespace

FieldCondition::FieldCondition(const Schema& schema, const std::string& condition) {
  const std::size_t sign = condition.find_first_of("=~");
  if (sign == std::string::npos) throw UsageError("--grep: " + condition + " is not FIELD=VALUE");
  contains_ = condition[sign] == '~';
  value_ = condition.substr(sign + 1);
  std::int64_t number = 0;
  const char* end = value_.data() + value_.size();
  const auto result = std::from_chars(value_.data(), end, number);
  if (result.ec == std::errc() && result.ptr == end) number_ = number;

  std::istringstream path(condition.substr(0, sign));
  std::string names;  // the path without places in lists
  for (std::string step; std::getline(path, step, '.');) {
    int index = -1;
    const std::size_t open = step.find('[');
    if (open != std::string::npos) {
      const char* last = step.data() + step.size() - 1;
      const auto place = std::from_chars(step.data() + open + 1, last, index);
      if (place.ec != std::errc() || place.ptr != last || *last != ']' || index < 0) {
        throw UsageError("--grep: " + step + " is not a field and its place in a list");
      }
      step.erase(open);
    }
    names += (names.empty() ? "" : ".") + step;
    steps_.push_back({step, index});
  }
  for (const Descriptor* type : schema.messages()) {
    const FieldDescriptor* field = FindField(*type, names);
    if (field != nullptr && field->message_type() == nullptr) return;
  }
  std::vector<std::string> fields;
  for (const Descriptor* type : schema.messages()) {
    for (int i = 0; i < type->field_count(); ++i) fields.push_back(type->field(i)->name());
  }
  throw Error("--grep: no message has a field " + condition.substr(0, sign) +
              DidYouMean(names.substr(names.rfind('.') + 1), fields));
}

bool FieldCondition::Names(const text::Tables& tables, const text::Level& level,
                           const text::Field& field) const {
  if (tables.NameOf(field) != steps_.back().name) return false;
  const text::Level* at = &level;
  for (std::size_t i = steps_.size() - 1; i-- > 0; at = at->above) {
    if (at->field == nullptr || tables.NameOf(*at->field) != steps_[i].name) return false;
    if (steps_[i].index >= 0 && steps_[i].index != at->index) return false;
  }
  return at->above == nullptr;
}

bool FieldCondition::Is(const text::Field& field, std::uint64_t number) const {
  if (contains_) return false;
  if (field.kind == text::FieldKind::kBool) return value_ == (number != 0 ? "true" : "false");
  if (field.kind == text::FieldKind::kUint64) return value_ == std::to_string(number);
  if (!number_) return false;
  if (field.kind == text::FieldKind::kUint32) return static_cast<std::uint32_t>(number) == *number_;
  if (field.kind == text::FieldKind::kInt64) return static_cast<std::int64_t>(number) == *number_;
  return static_cast<std::int32_t>(number) == *number_;
}

bool FieldCondition::Is(std::string_view string) const {
  return contains_ ? string.find(value_) != std::string_view::npos : string == value_;
}

Glance TakeGlance(const Schema& schema, const TypeInfo& type, std::string_view bytes,
                  const FieldCondition* condition) {
  Glance glance;
  glance.has_field = condition == nullptr;
  Looker looker(schema.tables(), type, condition, glance);
  glance.outcome = text::WalkMessage(schema.tables(), type.index, bytes, looker);
  return glance;
}

}  // namespace virtual_modem::inspect
