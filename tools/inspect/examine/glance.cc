#include "inspect/examine/glance.h"

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
    Look(level, field, field, value);
  }
  void Enum(const text::Level& level, const text::Field& field, std::uint64_t value,
            std::string_view name) {
    if (IsError(level, field)) glance_.error = name;
    Look(level, field, name);
    Look(level, field, field, value);
  }
  void String(const text::Level& level, const text::Field& field, std::string_view bytes) {
    Look(level, field, bytes);
  }
  void Unknown(const text::Level& level, const text::Field* field, std::uint32_t /*number*/,
               text::WireType type, std::string_view /*whole*/, std::string_view value) {
    if (field == nullptr || field->kind != text::FieldKind::kEnum || type != text::kVarint) return;
    const std::int32_t number = NumberIn(value);
    if (IsError(level, *field)) glance_.error = std::to_string(number);
    Look(level, *field, *field, static_cast<std::uint64_t>(number));
  }

 private:
  bool IsError(const text::Level& level, const text::Field& field) const {
    return level.above == nullptr && type_.error != nullptr &&
           tables_.NumberOf(field) == static_cast<std::uint32_t>(type_.error->number());
  }
  template <typename... Value>
  void Look(const text::Level& level, const text::Field& field, const Value&... value) {
    if (condition_ != nullptr && condition_->Names(tables_, level, field) &&
        condition_->Is(value...)) {
      glance_.has_field = true;
    }
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
  const std::string path = condition.substr(0, sign);
  std::istringstream steps(path);
  for (std::string step; std::getline(steps, step, '.');) path_.push_back(step);
  std::vector<std::string> fields;
  for (const Descriptor* type : schema.messages()) {
    const FieldDescriptor* field = FindField(*type, path);
    if (field != nullptr && field->message_type() == nullptr) return;
    for (int i = 0; i < type->field_count(); ++i) fields.push_back(type->field(i)->name());
  }
  throw Error("--grep: no message has a field " + path +
              DidYouMean(path.substr(path.rfind('.') + 1), fields));
}

bool FieldCondition::Names(const text::Tables& tables, const text::Level& level,
                           const text::Field& field) const {
  const text::Field* below = &field;
  const text::Level* at = &level;
  for (auto step = path_.rbegin(); step != path_.rend(); ++step, at = at->above) {
    if (at == nullptr || tables.NameOf(*below) != *step) return false;
    below = at->field;
  }
  return at == nullptr;
}

bool FieldCondition::Is(const text::Field& field, std::uint64_t number) const {
  switch (field.kind) {
    case text::FieldKind::kBool:
      return Is(number != 0 ? "true" : "false");
    case text::FieldKind::kUint64:
      return Is(std::to_string(number));
    case text::FieldKind::kUint32:
      return Is(std::to_string(static_cast<std::uint32_t>(number)));
    case text::FieldKind::kInt64:
      return Is(std::to_string(static_cast<std::int64_t>(number)));
    default:
      return Is(std::to_string(static_cast<std::int32_t>(number)));
  }
}

bool FieldCondition::Is(std::string_view value) const {
  return contains_ ? value.find(value_) != std::string_view::npos : value == value_;
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
