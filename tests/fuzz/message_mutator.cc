// A mutator that knows the wire format: edits an input of message_fuzzer.cc or text_fuzzer.cc field
// by field and mends lengths, so that most of what it generates still parses.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <random>
#include <string>
#include <string_view>
#include <vector>

#include "support/wire.h"

extern "C" std::size_t LLVMFuzzerMutate(std::uint8_t* data, std::size_t size, std::size_t max_size);

namespace virtual_modem::testing {
namespace {

// Each takes its bytes off the front of the input; false when they are malformed or end too early.
bool TakeVarint(std::string_view* in, std::uint64_t* value) {
  *value = 0;
  for (unsigned shift = 0; shift < 70 && !in->empty(); shift += 7) {
    const auto byte = static_cast<unsigned char>(in->front());
    in->remove_prefix(1);
    *value |= std::uint64_t{byte & 0x7fU} << shift;
    if (byte < 0x80) return true;
  }
  return false;
}

bool TakeRaw(std::string_view* in, std::uint64_t size, std::string_view* bytes) {
  if (size > in->size()) return false;
  *bytes = in->substr(0, size);
  in->remove_prefix(size);
  return true;
}

// The value after a tag; of a group, whose tags count as fields of their own, there is none.
bool TakeValue(std::string_view* in, std::uint64_t tag, std::string_view* value) {
  std::uint64_t number = 0;
  *value = *in;
  switch (tag & 7) {
    case wire::kVarint:
      if (!TakeVarint(in, &number)) return false;
      value->remove_suffix(in->size());
      return true;
    case wire::kFixed64:
      return TakeRaw(in, 8, value);
    case wire::kFixed32:
      return TakeRaw(in, 4, value);
    case wire::kBytes:
      return TakeVarint(in, &number) && TakeRaw(in, number, value);
    default:
      *value = {};
      return true;
  }
}

class Mutator {
 public:
  explicit Mutator(unsigned seed) : random_(seed) {}

  // Makes one edit to a message, or to one in it.
  std::string Edit(std::string_view message) {
    std::vector<std::string> fields = Split(message);
    if (fields.empty()) return Mutated(message);
    const auto field = fields.begin() + static_cast<std::ptrdiff_t>(Below(fields.size()));
    switch (Below(6)) {
      case 0:
        fields.erase(field);
        break;
      case 1:
        fields.insert(field, std::string(fields[Below(fields.size())]));
        break;
      case 2:
        std::swap(*field, fields[Below(fields.size())]);
        break;
      default:
        *field = EditField(*field);
    }
    std::string out;
    for (const std::string& each : fields) out += each;
    return out;
  }

  std::size_t Below(std::size_t bound) {
    return std::uniform_int_distribution<std::size_t>(0, bound - 1)(random_);
  }

 private:
  // The message cut before every field; a malformed rest is one piece.
  static std::vector<std::string> Split(std::string_view message) {
    std::vector<std::string> fields;
    while (!message.empty()) {
      const std::string_view start = message;
      std::uint64_t tag = 0;
      std::string_view value;
      if (!TakeVarint(&message, &tag) || !TakeValue(&message, tag, &value)) message = {};
      fields.emplace_back(start.substr(0, start.size() - message.size()));
    }
    return fields;
  }

  std::string EditField(std::string_view field) {
    std::string_view rest = field;
    std::uint64_t tag = 0;
    std::string_view value;
    if (!TakeVarint(&rest, &tag) || !TakeValue(&rest, tag, &value)) return Mutated(field);
    const std::uint64_t type = tag & 7;
    if (Below(8) == 0) tag ^= std::uint64_t{1} << Below(8);  // another field, or wire type
    std::string head = wire::Varint(tag);
    if (type == wire::kVarint) {
      std::uint64_t number = 0;
      TakeVarint(&value, &number);
      LLVMFuzzerMutate(reinterpret_cast<std::uint8_t*>(&number), sizeof number, sizeof number);
      return head + wire::Varint(number);
    }
    if (type != wire::kBytes) return head + Mutated(value);
    const std::string edited = Below(2) == 0 ? Edit(value) : Mutated(value);
    return head + wire::Varint(edited.size()) + edited;
  }

  static std::string Mutated(std::string_view bytes) {
    std::string out(bytes);
    out.resize(bytes.size() + 16);
    out.resize(
        LLVMFuzzerMutate(reinterpret_cast<std::uint8_t*>(out.data()), bytes.size(), out.size()));
    return out;
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
  std::string message(reinterpret_cast<const char*>(data) + 2, size - 2);
  for (std::size_t edits = 1 + mutator.Below(3); edits > 0; --edits) {
    message = mutator.Edit(message);
  }
  if (message.size() > max_size - 2) return LLVMFuzzerMutate(data, size, max_size);
  std::copy(message.begin(), message.end(), data + 2);
  return message.size() + 2;
}
