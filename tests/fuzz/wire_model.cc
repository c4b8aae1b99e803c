#include "wire_model.h"

#include <cstdint>
#include <utility>
#include <vector>

#include "wire_reader.h"

namespace virtual_modem::testing {
namespace {

// Takes one field after its tag and appends it to `out`, tag and lengths in their shortest form.
bool CopyUnknown(std::uint32_t tag, std::string_view* in, std::string* out) {
  if (tag >> 3 == 0) return false;
  *out += wire::Varint(tag);
  std::uint64_t value = 0;
  std::string_view bytes;
  switch (tag & 7) {
    case wire::kVarint:
      if (!wire::TakeVarint(in, &value)) return false;
      *out += wire::Varint(value);
      return true;
    case wire::kFixed64:
    case wire::kFixed32:
      if (!wire::TakeRaw(in, (tag & 7) == wire::kFixed64 ? 8 : 4, &bytes)) return false;
      *out += bytes;
      return true;
    case wire::kBytes:
      if (!wire::TakeBytes(in, &bytes)) return false;
      *out += wire::Varint(bytes.size());
      *out += bytes;
      return true;
    case wire::kStart:
      while (wire::TakeVarint(in, &value)) {
        const auto inner = static_cast<std::uint32_t>(value);
        if ((inner & 7) == wire::kEnd) {
          *out += wire::Varint(inner);
          return inner >> 3 == tag >> 3;
        }
        if (!CopyUnknown(inner, in, out)) return false;
      }
      return false;
    default:
      return false;
  }
}

// What a field of that kind keeps of a number.
std::int64_t Narrow(Kind kind, std::uint64_t number) {
  switch (kind) {
    case Kind::kBool:
      return number != 0 ? 1 : 0;
    case Kind::kUint32:
      return static_cast<std::uint32_t>(number);
    default:
      return static_cast<std::int32_t>(number);
  }
}

class Reader {
 public:
  explicit Reader(const MessageSchema& schema) : schema_(schema), values_(schema.fields.size()) {}

  bool Read(std::string_view in) {
    while (!in.empty()) {
      std::uint64_t value = 0;
      std::string_view bytes;
      if (!wire::TakeVarint(&in, &value)) return false;
      const auto tag = static_cast<std::uint32_t>(value);
      const FieldSchema* field = wire::FindField(schema_, tag >> 3);
      const bool as_declared = field != nullptr && (tag & 7) == wire::TypeOf(field->kind);
      if (as_declared && wire::TypeOf(field->kind) == wire::kVarint) {
        if (!wire::TakeVarint(&in, &value)) return false;
        StoreNumber(*field, value);
      } else if (as_declared) {
        if (!wire::TakeBytes(&in, &bytes)) return false;
        Store(*field, std::string(bytes));
      } else if (field != nullptr && (tag & 7) == wire::kBytes &&
                 field->label == Label::kRepeated) {  // packed numbers
        if (!wire::TakeBytes(&in, &bytes)) return false;
        while (!bytes.empty()) {
          if (!wire::TakeVarint(&bytes, &value)) return false;
          StoreNumber(*field, value);
        }
      } else if (!CopyUnknown(tag, &in, &unknown_)) {
        return false;
      }
    }
    return true;
  }

  std::optional<ModelResult> Write() const {
    ModelResult result{{}, true};
    for (std::size_t i = 0; i < values_.size(); ++i) {
      const FieldSchema& field = schema_.fields[i];
      if (field.label == Label::kRequired && values_[i].empty()) result.initialized = false;
      for (const std::string& value : values_[i]) {
        if (field.kind == Kind::kMessage) {
          const auto inner = ReadAndWrite(SchemaOf(field.type), value);
          if (!inner) return std::nullopt;
          result.initialized = result.initialized && inner->initialized;
          result.bytes += wire::BytesField(field.number, inner->bytes);
        } else if (field.kind == Kind::kString) {
          result.bytes += wire::BytesField(field.number, value);
        } else {
          result.bytes += value;
        }
      }
    }
    result.bytes += unknown_;
    return result;
  }

 private:
  void Store(const FieldSchema& field, std::string value) {
    std::vector<std::string>& values = values_[&field - schema_.fields.data()];
    if (field.label == Label::kRepeated || values.empty()) {
      values.push_back(std::move(value));
    } else if (field.kind == Kind::kMessage) {
      values[0] += value;  // merging two messages is reading one after the other
    } else {
      values[0] = std::move(value);
    }
  }

  void StoreNumber(const FieldSchema& field, std::uint64_t number) {
    const std::int64_t value = Narrow(field.kind, number);
    if (field.kind == Kind::kEnum && !SchemaOfEnum(field.type).Declares(value)) {
      unknown_ += wire::Tag(field.number, wire::kVarint) + wire::Varint(number);
    } else {
      Store(field, wire::VarintField(field.number, value));
    }
  }

  const MessageSchema& schema_;
  // By field: numbers with their tags, strings, unread payloads of sub-messages.
  std::vector<std::vector<std::string>> values_;
  std::string unknown_;
};

}  // namespace

std::optional<ModelResult> ReadAndWrite(const MessageSchema& schema, std::string_view input) {
  Reader reader(schema);
  if (!reader.Read(input)) return std::nullopt;
  return reader.Write();
}

}  // namespace virtual_modem::testing
