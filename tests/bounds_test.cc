// Pins the order of magnitude of what hostile bytes can cost a receiver (docs/hostile-input.md).
#include <gtest/gtest.h>
#include <malloc.h>

#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <functional>
#include <new>
#include <string>
#include <string_view>
#include <vector>

#include "support/message_types.h"
#include "support/schema.h"
#include "support/wire.h"

namespace {
// Bytes of heap, as the C library's allocator hands them out.
std::size_t in_use = 0;
std::size_t peak = 0;
}  // namespace

// The library takes them for its own, too.
void* operator new(std::size_t size) {
  void* block = std::malloc(size);
  if (block == nullptr) throw std::bad_alloc();
  in_use += malloc_usable_size(block);
  peak = std::max(peak, in_use);
  return block;
}
void operator delete(void* block) noexcept {
  in_use -= malloc_usable_size(block);
  std::free(block);
}
void operator delete(void* block, std::size_t) noexcept { operator delete(block); }

namespace virtual_modem::testing {
namespace {

constexpr std::size_t kInputSize = 16 << 10;
constexpr int kUndeclaredField = 19000;  // no schema may declare it

// The most heap in use at once while the bytes are read into a new message, in bytes; the message
// object itself included, the input not.
std::size_t PeakOfParse(const MessageType& type, std::string_view bytes) {
  const std::size_t before = peak = in_use;
  const auto message = type.create();
  message->ParsePartialFromArray(bytes.data(), static_cast<int>(bytes.size()));
  return peak - before;
}

// The singular strings and sub-messages of a message, all empty.
std::string EmptyParts(const MessageSchema& schema) {
  std::string bytes;
  for (const FieldSchema& field : schema.fields) {
    if (field.label == Label::kRepeated) continue;
    if (field.kind == Kind::kString) bytes += wire::BytesField(field.number, "");
    if (field.kind == Kind::kMessage) {
      bytes += wire::BytesField(field.number, EmptyParts(SchemaOf(field.type)));
    }
  }
  return bytes;
}

// Hands out inputs that buy the most heap with the fewest bytes: unknown fields and each repeated
// field over and over, at every depth that the fields in `way` lead to.
void EachHostileInput(const MessageSchema& schema, const std::vector<int>& way,
                      const std::function<void(const std::string&)>& use) {
  const auto fill = [&](const std::string& repeated) {
    std::string bytes;
    while (bytes.size() + repeated.size() < kInputSize) bytes += repeated;
    for (auto field = way.rbegin(); field != way.rend(); ++field) {
      bytes = wire::BytesField(*field, bytes);
    }
    use(bytes);
  };
  fill(wire::VarintField(kUndeclaredField, 0));
  fill(wire::GroupField(kUndeclaredField, ""));
  for (const FieldSchema& field : schema.fields) {
    std::vector<int> inner = way;
    inner.push_back(field.number);
    if (field.kind == Kind::kMessage) EachHostileInput(SchemaOf(field.type), inner, use);
    if (field.label != Label::kRepeated) continue;
    if (field.kind == Kind::kMessage) {
      fill(wire::BytesField(field.number, ""));
      fill(wire::BytesField(field.number, EmptyParts(SchemaOf(field.type))));
    } else if (field.kind == Kind::kString) {
      fill(wire::BytesField(field.number, ""));
      fill(wire::BytesField(field.number, std::string(16, 'x')));  // 15 bytes need no heap
    } else {
      fill(wire::VarintField(field.number, 1));
      fill(wire::BytesField(field.number, "\1\1\1\1"));  // packed
    }
  }
}

TEST(Bounds, HeapPerByteOfInput) {
  for (const MessageType& type : AllMessageTypes()) {
    EachHostileInput(SchemaOf(type.name), {}, [&](const std::string& bytes) {
      EXPECT_LT(PeakOfParse(type, bytes), 100 * bytes.size())
          << type.name << ": " << ::testing::PrintToString(bytes.substr(0, 40));
    });
  }
}

TEST(Bounds, HeapWhateverTheInput) {
  for (const MessageType& type : AllMessageTypes()) {
    EXPECT_LT(PeakOfParse(type, EmptyParts(SchemaOf(type.name))), 8 << 10) << type.name;
  }
}

}  // namespace
}  // namespace virtual_modem::testing
