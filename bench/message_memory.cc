// Prints what each message takes in memory: sizeof its class, and the heap of an object with every
// field present (repeated fields twice) beyond that, in bytes and in allocations.
#include <malloc.h>

#include <cstdio>
#include <cstdlib>
#include <new>
#include <string>

#include "support/message_types.h"
#include "support/samples.h"
#include "support/schema.h"

namespace {

struct Heap {
  std::size_t bytes = 0;  // as malloc rounds them up
  std::size_t allocations = 0;
};
Heap heap;

}  // namespace

// The library calls these too: an executable's own operator new serves every library of it.
void* operator new(std::size_t size) {
  void* const memory = std::malloc(size);
  if (memory == nullptr) throw std::bad_alloc();
  heap.bytes += malloc_usable_size(memory);
  ++heap.allocations;
  return memory;
}
void operator delete(void* memory) noexcept { std::free(memory); }
void operator delete(void* memory, std::size_t /*size*/) noexcept { std::free(memory); }

int main() {
  using virtual_modem::testing::Encode;
  using virtual_modem::testing::Recipe;
  using virtual_modem::testing::SchemaOf;
  using virtual_modem::testing::Values;
  std::printf("%-48s %6s %6s %6s %11s\n", "message", "wire", "object", "heap", "allocations");
  std::size_t objects = 0;
  std::size_t filled = 0;
  for (const auto& type : virtual_modem::testing::AllMessageTypes()) {
    const std::string bytes = Encode(SchemaOf(type.name), Recipe{{Values::kHigh}});
    const auto message = type.create();
    heap = {};
    if (!message->ParseFromString(bytes)) return 1;
    std::printf("%-48s %6zu %6zu %6zu %11zu\n", std::string(type.name).c_str(), bytes.size(),
                type.object_size, heap.bytes, heap.allocations);
    objects += type.object_size;
    filled += heap.bytes;
  }
  std::printf("%-48s %6s %6zu %6zu\n", "all of them", "", objects, filled);
}
