#include "bounds/counting_allocator.h"

#include <malloc.h>

#include <algorithm>
#include <cstdlib>
#include <limits>
#include <new>

namespace virtual_modem::testing {
namespace {

constexpr std::size_t kNever = std::numeric_limits<std::size_t>::max();

std::size_t in_use = 0;
std::size_t peak = 0;
std::size_t left_before_failure = kNever;

void* Allocate(std::size_t size) {
  if (left_before_failure != kNever) {
    if (left_before_failure <= 1) throw std::bad_alloc();
    --left_before_failure;
  }
  void* block = std::malloc(size);
  if (block == nullptr) throw std::bad_alloc();
  in_use += malloc_usable_size(block);
  peak = std::max(peak, in_use);
  return block;
}

void Free(void* block) {
  if (block == nullptr) return;
  in_use -= malloc_usable_size(block);
  std::free(block);
}

}  // namespace

std::size_t HeapInUse() { return in_use; }
std::size_t HeapPeak() { return peak; }
void ResetHeapPeak() { peak = in_use; }

FailingAllocations::FailingAllocations(std::size_t count) { left_before_failure = count; }
FailingAllocations::~FailingAllocations() { left_before_failure = kNever; }

}  // namespace virtual_modem::testing

void* operator new(std::size_t size) { return virtual_modem::testing::Allocate(size); }
void* operator new[](std::size_t size) { return virtual_modem::testing::Allocate(size); }
void operator delete(void* block) noexcept { virtual_modem::testing::Free(block); }
void operator delete[](void* block) noexcept { virtual_modem::testing::Free(block); }
void operator delete(void* block, std::size_t) noexcept { virtual_modem::testing::Free(block); }
void operator delete[](void* block, std::size_t) noexcept { virtual_modem::testing::Free(block); }
