// The program's operator new, replaced by one that counts and that can be made to fail. A program
// that links counting_allocator.cc has it, the library in that program too. For one thread.
#pragma once

#include <cstddef>

namespace virtual_modem::testing {

// Bytes of heap in use, as the C library's allocator hands them out.
std::size_t HeapInUse();

// The largest HeapInUse() since the last ResetHeapPeak().
std::size_t HeapPeak();
void ResetHeapPeak();

// The `count`th allocation from now on throws std::bad_alloc, and so does every one after it, until
// the object is gone.
class FailingAllocations {
 public:
  explicit FailingAllocations(std::size_t count);
  FailingAllocations(const FailingAllocations&) = delete;
  FailingAllocations& operator=(const FailingAllocations&) = delete;
  ~FailingAllocations();
};

}  // namespace virtual_modem::testing
