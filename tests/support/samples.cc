#include "support/samples.h"

#include <limits>

#include "support/wire.h"

namespace virtual_modem::testing {
namespace {

std::string Text(const FieldSchema& field, Values values) {
  switch (values) {
    case Values::kZero:
      return {};
    case Values::kHigh:
      return std::string("\xff\0\xc0", 3) + std::string(field.name);
    case Values::kLow:
      return "low " + std::string(field.name);
  }
  return {};
}

template <typename Number>
std::int64_t Choose(Values values, Number low, Number high) {
  if (values == Values::kZero) return 0;
  return values == Values::kHigh ? high : low;
}

std::int64_t Scalar(const FieldSchema& field, Values values) {
  switch (field.kind) {
    case Kind::kInt32:
      return Choose(values, std::numeric_limits<std::int32_t>::min(),
                    std::numeric_limits<std::int32_t>::max());
    case Kind::kUint32:
      return Choose(values, 0x80000000U, 0xffffffffU);
    case Kind::kInt64:
      return Choose(values, std::numeric_limits<std::int64_t>::min(),
                    std::numeric_limits<std::int64_t>::max());
    case Kind::kUint64:
      return Choose(values, std::numeric_limits<std::int64_t>::min(), std::int64_t{-1});
    case Kind::kBool:
      return Choose(values, 1, 1);
    default: {
      const EnumSchema& enumeration = SchemaOfEnum(field.type);
      return (values == Values::kHigh ? enumeration.values.back() : enumeration.values.front())
          .number;
    }
  }
}

std::string EncodeField(const FieldSchema& field, const Recipe& recipe) {
  switch (field.kind) {
    case Kind::kMessage:
      return wire::BytesField(field.number, Encode(SchemaOf(field.type), recipe));
    case Kind::kString:
      return wire::BytesField(field.number, Text(field, recipe.values.back()));
    default:
      return wire::VarintField(field.number, Scalar(field, recipe.values.back()));
  }
}

}  // namespace

std::vector<std::string> EncodeParts(const MessageSchema& message, const Recipe& recipe) {
  std::vector<std::string> parts;
  for (const FieldSchema& field : message.fields) {
    const bool on_path = !recipe.omit.empty() && recipe.omit.front() == &field;
    if (on_path && recipe.omit.size() == 1) continue;
    if (recipe.required_only && field.label != Label::kRequired) continue;
    Recipe below = recipe;
    below.omit.clear();
    Recipe last = below;
    if (on_path) last.omit.assign(recipe.omit.begin() + 1, recipe.omit.end());
    if (field.label == Label::kRepeated) {
      for (const Values values : recipe.values) {
        below.values = last.values = {values};
        parts.push_back(EncodeField(field, below));
        parts.push_back(EncodeField(field, last));
      }
    } else {
      parts.push_back(EncodeField(field, last));
    }
  }
  return parts;
}

std::string Encode(const MessageSchema& message, const Recipe& recipe) {
  std::string bytes;
  for (const std::string& part : EncodeParts(message, recipe)) bytes += part;
  return bytes;
}

std::vector<FieldPath> RequiredPaths(const MessageSchema& message) {
  std::vector<FieldPath> paths;
  for (const FieldSchema& field : message.fields) {
    if (field.label == Label::kRequired) paths.push_back({&field});
    if (field.kind != Kind::kMessage) continue;
    for (FieldPath& below : RequiredPaths(SchemaOf(field.type))) {
      below.insert(below.begin(), &field);
      paths.push_back(std::move(below));
    }
  }
  return paths;
}

}  // namespace virtual_modem::testing
