#include "bounds/hostile_inputs.h"

#include <algorithm>
#include <string_view>

#include "support/wire.h"

namespace virtual_modem::testing {
namespace {

constexpr std::size_t kLongerThanInPlace = 16;  // std::string keeps 15 bytes without the heap

bool IsNumber(const FieldSchema& field) {
  return field.kind != Kind::kString && field.kind != Kind::kMessage;
}

int UnusedNumber(const MessageSchema& schema) {
  int number = 1;
  for (const FieldSchema& field : schema.fields) {
    if (field.number == number) ++number;
  }
  return number;
}

// The singular sub-messages of a message, empty; its strings too when asked for.
std::string EmptyParts(const MessageSchema& schema, bool strings) {
  std::string bytes;
  for (const FieldSchema& field : schema.fields) {
    if (field.label == Label::kRepeated || IsNumber(field)) continue;
    if (field.kind == Kind::kString && strings) bytes += wire::BytesField(field.number, "");
    if (field.kind == Kind::kMessage) {
      bytes += wire::BytesField(field.number, EmptyParts(SchemaOf(field.type), strings));
    }
  }
  return bytes;
}

class Collector {
 public:
  // `place` ends a description: " in `field` in `field`".
  void Add(const MessageSchema& schema, const std::string& place, const std::vector<int>& way) {
    const auto describe = [&place](std::string what, const std::string& more) {
      return what.append(more).append(place);
    };
    const auto add = [&](const std::string& what, std::string repeated) {
      inputs_.emplace_back(describe(what, ""), std::move(repeated), way);
    };
    add("unknown varint fields", wire::VarintField(UnusedNumber(schema), 0));
    add("unknown groups", wire::GroupField(UnusedNumber(schema), ""));
    for (const FieldSchema& field : schema.fields) {
      const std::string name = std::string("`").append(field.name).append("`");
      std::vector<int> inner = way;
      inner.push_back(field.number);
      const bool repeated = field.label == Label::kRepeated;
      if (IsNumber(field)) {
        if (!repeated) continue;
        add("numbers in " + name, wire::VarintField(field.number, 1));
        inputs_.emplace_back(describe("packed numbers in ", name), "\1", inner);
      } else if (field.kind == Kind::kString) {
        inputs_.emplace_back(describe("one long ", name), "x", inner);
        if (!repeated) continue;
        add("empty " + name, wire::BytesField(field.number, ""));
        add("16-byte " + name,
            wire::BytesField(field.number, std::string(kLongerThanInPlace, 'x')));
      } else {
        const MessageSchema& type = SchemaOf(field.type);
        if (repeated) {
          const std::string messages = EmptyParts(type, false);
          const std::string all = EmptyParts(type, true);
          add("empty " + name, wire::BytesField(field.number, ""));
          if (!messages.empty()) {
            add(name + " of empty sub-messages", wire::BytesField(field.number, messages));
          }
          if (all != messages) {
            add(name + " of empty strings", wire::BytesField(field.number, all));
          }
        }
        Add(type, describe(" in ", name), inner);
      }
    }
  }

  std::vector<HostileInput> Take() { return std::move(inputs_); }

 private:
  std::vector<HostileInput> inputs_;
};

}  // namespace

std::string HostileInput::Bytes(std::size_t size) const {
  constexpr std::size_t kWrapper = 6;  // at most, per level: tag and length
  const std::size_t room = size - kWrapper * way_.size();
  std::string bytes;
  while (bytes.size() + repeated_.size() <= room) bytes += repeated_;
  for (auto number = way_.rbegin(); number != way_.rend(); ++number) {
    bytes = wire::BytesField(*number, bytes);
  }
  return bytes;
}

std::vector<HostileInput> HostileInputs(const MessageSchema& schema) {
  Collector collector;
  collector.Add(schema, "", {});
  return collector.Take();
}

std::string EveryFieldOnce(const MessageSchema& schema) { return EmptyParts(schema, true); }

int Depth(const MessageSchema& schema) {
  int below = 0;
  for (const FieldSchema& field : schema.fields) {
    if (field.kind == Kind::kMessage) below = std::max(below, Depth(SchemaOf(field.type)));
  }
  return below + 1;
}

}  // namespace virtual_modem::testing
