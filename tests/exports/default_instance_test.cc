// The default instance of a message has one address everywhere. This program is an ordinary
// position-independent executable: the linker moves the data of the library that it names into it,
// by copy relocations. A library that binds its data to itself (-Bsymbolic, protected symbols) then
// goes on using an original that nobody else knows.
#include <dlfcn.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <new>

#include "virtual_modem/radio.pb.h"

namespace {

const void* watched = nullptr;
bool watched_was_deleted = false;

void Free(void* memory) {
  if (memory != nullptr && memory == watched) {
    watched_was_deleted = true;  // and is leaked: the test still looks at it
    return;
  }
  std::free(memory);
}

// Where the program or library that holds the address is loaded.
const void* HomeOf(const void* address) {
  Dl_info info{};
  return dladdr(address, &info) != 0 ? info.dli_fbase : nullptr;
}

}  // namespace

// The library calls these too: an executable's own operators serve every library of it.
void* operator new(std::size_t size) {
  void* const memory = std::malloc(size);
  if (memory == nullptr) throw std::bad_alloc();
  return memory;
}
void operator delete(void* memory) noexcept { Free(memory); }
void operator delete(void* memory, std::size_t /*size*/) noexcept { Free(memory); }

namespace {

TEST(DefaultInstance, HasOneAddressForLibraryAndExecutable) {
  const IccCardStatusResponse& seen_here = IccCardStatusResponse::default_instance();
  ASSERT_EQ(HomeOf(&seen_here), HomeOf(&watched)) << "no copy relocation: nothing is tested";

  // The destructor is the library's. It deletes the sub-messages of every object but the default
  // instance, whose are not its own: this is where the library's own idea of the address shows.
  auto* const part = new V1_2_CardStatus;
  auto& instance = const_cast<IccCardStatusResponse&>(seen_here);
  instance.unsafe_arena_set_allocated_cardstatus(part);
  watched = part;
  instance.~IccCardStatusResponse();
  EXPECT_FALSE(watched_was_deleted) << "the library took its default instance for another object";
  watched = nullptr;
  if (!watched_was_deleted) delete part;
}

TEST(DefaultInstance, IsToldFromOtherObjects) {
  auto* const part = new V1_2_CardStatus;
  watched_was_deleted = false;
  watched = part;
  {
    IccCardStatusResponse other;
    other.unsafe_arena_set_allocated_cardstatus(part);
  }
  watched = nullptr;
  EXPECT_TRUE(watched_was_deleted);
  ::operator delete(static_cast<void*>(part));  // the destructor has run
}

}  // namespace
