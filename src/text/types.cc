#include <virtual_modem/types.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <iterator>

#include "text/generated.h"

namespace virtual_modem {
namespace {

using google::protobuf::MessageLite;
using text::kTypeCount;
using text::kTypes;

constexpr Type kForeign{"", "", Kind::kRecord, nullptr, false, false};

// Identifies the class of a message without RTTI and without building its name: the address of its
// table of virtual functions, the first word of every object that has one in the Itanium C++ ABI.
// Classes of messages are final, so each has one table.
std::uintptr_t ClassOf(const MessageLite& message) {
  std::uintptr_t table = 0;
  std::memcpy(&table, static_cast<const void*>(&message), sizeof table);
  return table;
}

// From the table of a class to the index of its type: a hash table of a fixed size, filled at first
// use.
class TypesByClass {
 public:
  TypesByClass() {
    for (std::size_t index = 0; index < kTypeCount; ++index) {
      const std::uintptr_t key = ClassOf(*kTypes[index].prototype);
      std::size_t slot = SlotOf(key);
      while (slots_[slot].key != 0) slot = (slot + 1) % kSlots;
      slots_[slot] = {key, index};
    }
  }

  // kTypeCount when there is none.
  std::size_t Find(std::uintptr_t key) const {
    for (std::size_t slot = SlotOf(key); slots_[slot].key != 0; slot = (slot + 1) % kSlots) {
      if (slots_[slot].key == key) return slots_[slot].index;
    }
    return kTypeCount;
  }

 private:
  // A power of two, so that a slot is found without a division; three of four stay free.
  static constexpr std::size_t kSlots = [] {
    std::size_t slots = 4;
    while (slots < 4 * kTypeCount) slots *= 2;
    return slots;
  }();
  struct Slot {
    std::uintptr_t key;  // 0: free
    std::size_t index;
  };

  // Tables of virtual functions follow one another, 15 pointers each.
  static std::size_t SlotOf(std::uintptr_t key) { return key / (8 * sizeof(void*)) % kSlots; }

  std::array<Slot, kSlots> slots_{};
};

}  // namespace

const char* KindName(Kind kind) {
  constexpr const char* kNames[] = {"request", "response", "indication", "record"};
  const auto index = static_cast<std::size_t>(kind);
  return index < std::size(kNames) ? kNames[index] : "";
}

TypeList Types() { return {kTypes, kTypeCount}; }

const Type* FindType(std::string_view name) {
  const auto* end = text::kTypesByName + kTypeCount;
  const auto* found = std::lower_bound(
      text::kTypesByName, end, name,
      [](text::TypeIndex index, std::string_view wanted) { return kTypes[index].name < wanted; });
  if (found == end || kTypes[*found].name != name) return nullptr;
  return &kTypes[*found];
}

const Type& TypeOf(const MessageLite& message) {
  static const TypesByClass types;
  const std::size_t index = types.Find(ClassOf(message));
  return index == kTypeCount ? kForeign : kTypes[index];
}

std::optional<std::int32_t> SerialOf(const MessageLite& message) {
  const Type& type = TypeOf(message);
  if (!type.has_serial) return std::nullopt;
  return text::SerialOf(static_cast<std::size_t>(&type - kTypes), message);
}

}  // namespace virtual_modem
