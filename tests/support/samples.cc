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

std::string Encode(const MessageSchema& message, const Recipe& recipe) {
  std::string bytes;
  for (const FieldSchema& field : message.fields) {
    if (recipe.required_only && field.label != Label::kRequired) continue;
    if (field.label != Label::kRepeated) {
      bytes += EncodeField(field, recipe);
      continue;
    }
    for (const Values values : recipe.values) {
      const std::string element = EncodeField(field, {{values}, recipe.required_only});
      bytes += element + element;
    }
  }
  return bytes;
}

}  // namespace virtual_modem::testing
