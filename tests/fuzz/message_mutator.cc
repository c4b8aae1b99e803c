// A mutator that knows the schema: edits an input of message_fuzzer.cc or text_fuzzer.cc field by
// field, so that most of what it generates still parses.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <random>
#include <string>
#include <string_view>
#include <vector>

#include "support/message_types.h"
#include "support/schema.h"
#include "wire_reader.h"

extern "C" std::size_t LLVMFuzzerMutate(std::uint8_t* data, std::size_t size, std::size_t max_size);

namespace virtual_modem::testing {
namespace {

class Mutator {
 public:
  explicit Mutator(unsigned seed) : random_(seed) {}

  // Makes one edit to a payload of that type, or to a sub-message in it.
  std::string Edit(const MessageSchema& schema, std::string_view payload) {
    std::vector<std::string> fields = Split(payload);
    const std::size_t at = Below(fields.size() + 1);
    if (at == fields.size()) {
      fields.push_back(RandomField(schema, 0));
    } else {
      switch (Below(6)) {
        case 0:
          fields.erase(fields.begin() + static_cast<std::ptrdiff_t>(at));
          break;
        case 1:
          fields.insert(fields.begin() + static_cast<std::ptrdiff_t>(at), fields[at]);
          break;
        case 2:
          std::swap(fields[at], fields[Below(fields.size())]);
          break;
        case 3:
          fields.insert(fields.begin() + static_cast<std::ptrdiff_t>(at), RandomField(schema, 0));
          break;
        default:
          fields[at] = EditField(schema, fields[at]);
      }
    }
    std::string out;
    for (const std::string& field : fields) out += field;
    return out;
  }

  std::size_t Below(std::size_t bound) {
    return std::uniform_int_distribution<std::size_t>(0, bound - 1)(random_);
  }

 private:
  // The payload cut before every top-level field; malformed rest as one piece.
  static std::vector<std::string> Split(std::string_view payload) {
    std::vector<std::string> fields;
    while (!payload.empty()) {
      const std::string_view start = payload;
      std::uint64_t value = 0;
      std::string_view bytes;
      bool whole = wire::TakeVarint(&payload, &value);
      switch (value & 7) {
        case wire::kVarint:
          whole = whole && wire::TakeVarint(&payload, &value);
          break;
        case wire::kFixed64:
          whole = whole && wire::TakeRaw(&payload, 8, &bytes);
          break;
        case wire::kFixed32:
          whole = whole && wire::TakeRaw(&payload, 4, &bytes);
          break;
        case wire::kBytes:
          whole = whole && wire::TakeBytes(&payload, &bytes);
          break;
        default:  // a group's tags count as fields of their own
          break;
      }
      if (!whole) payload = {};
      fields.emplace_back(start.substr(0, start.size() - payload.size()));
    }
    return fields;
  }

  std::string EditField(const MessageSchema& schema, std::string_view field) {
    std::uint64_t tag = 0;
    std::string_view payload;
    if (!wire::TakeVarint(&field, &tag)) return RandomField(schema, 0);
    const FieldSchema* known = wire::FindField(schema, tag >> 3);
    if (known == nullptr) return RandomField(schema, 0);
    if (known->kind == Kind::kMessage && wire::TakeBytes(&field, &payload)) {
      return wire::BytesField(known->number, Edit(SchemaOf(known->type), payload));
    }
    return RandomKnown(*known, 0);
  }

  std::string RandomField(const MessageSchema& schema, int depth) {
    const std::size_t at = Below(schema.fields.size() + 1);
    return at < schema.fields.size() ? RandomKnown(schema.fields[at], depth) : RandomUnknown();
  }

  std::string RandomKnown(const FieldSchema& field, int depth) {
    if (Below(16) == 0) {  // packed, where it may be so; else of another wire type than declared
      std::string numbers;
      for (std::size_t n = Below(4); n > 0; --n) numbers += wire::Varint(RandomNumber(field));
      return wire::BytesField(field.number, numbers);
    }
    if (field.kind == Kind::kString) return wire::BytesField(field.number, RandomBytes());
    if (field.kind != Kind::kMessage) {
      return wire::Tag(field.number, wire::kVarint) + wire::Varint(RandomNumber(field));
    }
    std::string payload;
    for (std::size_t n = Below(4); n > 0 && depth < 4; --n) {
      payload += RandomField(SchemaOf(field.type), depth + 1);
    }
    return wire::BytesField(field.number, payload);
  }

  std::string RandomUnknown() {
    const int number = static_cast<int>(1 + Below(Below(2) == 0 ? 40 : (1U << 29) - 1));
    switch (Below(4)) {
      case 0:
        return wire::VarintField(number, static_cast<std::int64_t>(Below(1U << 20)));
      case 1:
        return wire::BytesField(number, RandomBytes());
      case 2:
        return Below(2) == 0 ? wire::Fixed64Field(number) : wire::Fixed32Field(number);
      default: {
        const std::string value = wire::VarintField(1, static_cast<int>(Below(1000)));
        if (Below(4) != 0) return wire::GroupField(number, value);
        std::string groups = value;  // about as many as parsers take
        for (std::size_t levels = 98 + Below(4); levels > 0; --levels) {
          groups = wire::GroupField(number & 15, groups);
        }
        return groups;
      }
    }
  }

  std::uint64_t RandomNumber(const FieldSchema& field) {
    if (field.kind == Kind::kEnum && Below(4) != 0) {
      const std::vector<EnumValue>& values = SchemaOfEnum(field.type).values;
      return static_cast<std::uint64_t>(values[Below(values.size())].number) + (Below(8) == 0);
    }
    static constexpr std::uint64_t kCorners[] = {
        0, 1, 127, 128, 0x7fffffff, 0x80000000, 0xffffffff, 0x100000000, ~0ULL, ~0ULL << 31};
    return Below(2) == 0 ? Below(1000) : kCorners[Below(std::size(kCorners))];
  }

  std::string RandomBytes() {
    std::string bytes(Below(Below(8) == 0 ? 200 : 20), '\0');
    for (char& byte : bytes) byte = static_cast<char>(Below(256));
    return bytes;
  }

  std::minstd_rand random_;
};

}  // namespace
}  // namespace virtual_modem::testing

extern "C" std::size_t LLVMFuzzerCustomMutator(std::uint8_t* data, std::size_t size,
                                               std::size_t max_size, unsigned seed) {
  virtual_modem::testing::Mutator mutator(seed);
  // Plain mutations find what a field-wise editor cannot make.
  if (size < 2 || mutator.Below(4) == 0) return LLVMFuzzerMutate(data, size, max_size);
  if (mutator.Below(16) == 0) data[1] = static_cast<std::uint8_t>(mutator.Below(256));
  if (mutator.Below(16) == 0) data[0] = static_cast<std::uint8_t>(mutator.Below(256));
  const auto& types = virtual_modem::testing::AllMessageTypes();
  const auto& schema = virtual_modem::testing::SchemaOf(types[data[0] % types.size()].name);
  std::string payload(reinterpret_cast<const char*>(data) + 2, size - 2);
  for (std::size_t edits = 1 + mutator.Below(3); edits > 0; --edits) {
    payload = mutator.Edit(schema, payload);
  }
  if (payload.size() > max_size - 2) return LLVMFuzzerMutate(data, size, max_size);
  std::copy(payload.begin(), payload.end(), data + 2);
  return payload.size() + 2;
}
