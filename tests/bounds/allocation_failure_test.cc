// What happens when memory runs out: std::bad_alloc passes through the library.
// docs/hostile-input.md says what holds of the message afterwards.
#include <gtest/gtest.h>

#include <cstddef>
#include <functional>
#include <new>
#include <string>

#include "bounds/counting_allocator.h"
#include "support/message_types.h"
#include "support/samples.h"
#include "support/wire.h"

namespace virtual_modem::testing {
namespace {

// The runtime makes a new element of a list before it makes room for it: when there is none, the
// empty element is leaked.
constexpr std::size_t kEmptyElement = 256;  // bytes; the largest fits

// Runs the operation with its first, second, ... allocation failing, until it needs no more.
// Whatever it made must be gone afterwards, but for `leak` bytes each time that it failed.
void FailEach(const char* what, std::size_t leak, const std::function<void()>& operation) {
  for (std::size_t failing = 1;; ++failing) {
    const std::size_t before = HeapInUse();
    bool failed = false;
    try {
      const FailingAllocations failure(failing);
      operation();
    } catch (const std::bad_alloc&) {
      failed = true;
    }
    EXPECT_LE(HeapInUse() - before, failed ? leak : 0) << what << ", allocation " << failing;
    if (!failed) return;
  }
}

TEST(AllocationFailure, PassesThroughTheLibrary) {
  for (const MessageType& type : AllMessageTypes()) {
    SCOPED_TRACE(type.name);
    // Every field, and an unknown one.
    const std::string bytes = Encode(SchemaOf(type.name), {{Values::kHigh, Values::kLow}}) +
                              wire::BytesField(99, std::string(100, 'u'));
    const std::size_t before = HeapInUse();
    const auto message = type.create();
    ASSERT_TRUE(message->ParseFromString(bytes));
    // A copy that fails half-way leaks what it has made so far.
    const std::size_t copy = HeapInUse() - before;

    FailEach("parse", kEmptyElement, [&] {
      type.create()->ParsePartialFromArray(bytes.data(), static_cast<int>(bytes.size()));
    });
    FailEach("parse on an arena", 0, [&] {
      Arena arena;
      type.create_on(&arena)->ParsePartialFromArray(bytes.data(), static_cast<int>(bytes.size()));
    });
    FailEach("copy", copy, [&] { type.copy(*message); });
    FailEach("merge", copy, [&] { type.merge_from(*type.create(), *message); });
    FailEach("serialize", 0, [&] { message->SerializeAsString(); });
  }
}

}  // namespace
}  // namespace virtual_modem::testing
