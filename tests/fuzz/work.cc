#include "work.h"

#include <cstddef>
#include <cstdlib>
#include <new>

namespace {
std::uint64_t work = 0;
}

std::uint64_t WorkSoFar() { return work; }

// The linker takes it for the other one, which libFuzzer has too.
extern "C" void __wrap___sanitizer_cov_trace_pc() { ++work; }

extern "C" void* __real_memchr(const void* bytes, int wanted, std::size_t size);
extern "C" void* __wrap_memchr(const void* bytes, int wanted, std::size_t size) {
  void* found = __real_memchr(bytes, wanted, size);
  work += found == nullptr ? size
                           : static_cast<std::size_t>(static_cast<const char*>(found) -
                                                      static_cast<const char*>(bytes));
  return found;
}

void* operator new(std::size_t size, const std::nothrow_t& /*nothrow*/) noexcept {
  work += size;
  return std::malloc(size == 0 ? 1 : size);
}
void* operator new(std::size_t size) {
  if (void* memory = operator new(size, std::nothrow)) return memory;
  throw std::bad_alloc();
}
void operator delete(void* memory) noexcept { std::free(memory); }
void operator delete(void* memory, std::size_t /*size*/) noexcept { std::free(memory); }
