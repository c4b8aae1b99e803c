#include "inspect/examine/glance.h"

#include <google/protobuf/stubs/strutil.h>

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
    LookAtNumber(level, field, value);
  }
  void Enum(const text::Level& level, const text::Field& field, std::uint64_t value,
            std::string_view name) {
    if (IsError(level, field)) glance_.error = name;
    Look(level, field, name);
    LookAtNumber(level, field, value);
  }
  void String(const text::Level& level, const text::Field& field, std::string_view bytes) {
    Look(level, field, bytes);
  }
  void Undeclared(const text::Level& level, const text::Field& field, std::uint64_t value,
                  std::string_view /*whole*/) {
    if (IsError(level, field)) glance_.error = std::to_string(static_cast<std::int32_t>(value));
    LookAtNumber(level, field, value);
  }

 private:
  bool IsError(const text::Level& level, const text::Field& field) const {
    return level.above == nullptr && type_.error != nullptr &&
           tables_.NumberOf(field) == static_cast<std::uint32_t>(type_.error->number());
  }
  void Look(const text::Level& level, const text::Field& field, std::string_view value) {
    if (!IsAtPath(level, field)) return;
    const std::string& wanted = condition_->value;
    const bool is =
        condition_->contains ? value.find(wanted) != std::string_view::npos : value == wanted;
    glance_.has_field = glance_.has_field || is;
  }
  void LookAtNumber(const text::Level& level, const text::Field& field, std::uint64_t number) {
    if (!IsAtPath(level, field)) return;
    std::array<char, text::kMaxDigits> digits;
    const char* end = text::WriteNumber(field, number, digits.data());
    Look(level, field, {digits.data(), static_cast<std::size_t>(end - digits.data())});
  }
  // Whether the condition is about the field.
  bool IsAtPath(const text::Level& level, const text::Field& field) const {
    if (condition_ == nullptr) return false;
    const text::Field* below = &field;
    const text::Level* at = &level;
    for (auto step = condition_->path.rbegin(); step != condition_->path.rend(); ++step) {
      if (at == nullptr || tables_.NameOf(*below) != *step) return false;
      below = at->field;
      at = at->above;
    }
    return at == nullptr;
  }

  const text::Tables& tables_;
  const TypeInfo& type_;
  const FieldCondition* condition_;
  Glance& glance_;
};

}  // namespace

FieldCondition ParseCondition(const Schema& schema, const std::string& condition) {
  const std::size_t sign = condition.find_first_of("=~");
  if (sign == std::string::npos) throw UsageError("--grep: " + condition + " is not FIELD=VALUE");
  const std::string path = condition.substr(0, sign);
  for (const TypeInfo& each : schema.types()) {
    const FieldDescriptor* field = FindField(*each.type, path);
    if (field == nullptr || field->message_type() != nullptr) continue;
    return {google::protobuf::Split(path, "."), condition[sign] == '~', condition.substr(sign + 1)};
  }
  std::vector<std::string> names;
  for (const FieldDescriptor* field : schema.fields()) names.push_back(field->name());
  throw Error("--grep: no message has a field " + path +
              DidYouMean(path.substr(path.rfind('.') + 1), names));
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
