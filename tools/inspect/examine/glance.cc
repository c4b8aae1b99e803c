#include "inspect/examine/glance.h"

#include <array>

#include "inspect/error.h"
#include "text/print.h"

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
  void Undeclared(const text::Level& level, const text::Field& field, std::uint64_t value,
                  std::string_view /*whole*/) {
    if (IsError(level, field)) glance_.error = std::to_string(static_cast<std::int32_t>(value));
    Look(level, field, field, value);
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
  for (const TypeInfo& each : schema.types()) {
    const FieldDescriptor* field = FindField(*each.type, path);
    if (field != nullptr && field->message_type() == nullptr) return;
  }
  for (const FieldDescriptor* field : schema.fields()) fields.push_back(field->name());
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
  std::array<char, text::kMaxDigits> digits;
  const char* end = text::WriteNumber(field, number, digits.data());
  return Is({digits.data(), static_cast<std::size_t>(end - digits.data())});
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
