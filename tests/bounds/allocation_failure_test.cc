// What happens when memory runs out: std::bad_alloc passes through the library, which frees what
// the failed operation had begun. docs/hostile-input.md says what holds of the message afterwards.
#include <gtest/gtest.h>

#include <cstddef>
#include <functional>
#include <memory>
#include <new>
#include <string>
#include <utility>

#include "bounds/counting_allocator.h"
#include "support/message_types.h"
#include "support/samples.h"
#include "support/wire.h"
#include "virtual_modem/radio.pb.h"

namespace virtual_modem::testing {
namespace {

// Runs the operation with its first, second, ... allocation failing, until it needs no more.
// Returns how many failed. Whatever it made is gone afterwards, but for `tolerated` bytes a time.
std::size_t FailEach(const std::string& what, std::size_t tolerated,
                     const std::function<void()>& operation) {
  for (std::size_t failed = 0;; ++failed) {
    const std::size_t before = HeapInUse();
    bool ran_out = false;
    try {
      const FailingAllocations failing(failed + 1);
      operation();
    } catch (const std::bad_alloc&) {
      ran_out = true;
    }
    EXPECT_LE(HeapInUse() - before, ran_out ? tolerated : 0)
        << what << ": allocation " << failed + 1 << " failed";
    if (!ran_out) return failed;
  }
}

class AllocationFailure : public ::testing::TestWithParam<const MessageType*> {
 protected:
  AllocationFailure()
      : bytes_(Encode(SchemaOf(type_.name), {{Values::kHigh, Values::kLow}}) +
               wire::BytesField(99, std::string(100, 'u'))),
        message_(type_.create()) {
    EXPECT_TRUE(message_->ParseFromString(bytes_));
  }

  const MessageType& type_ = *GetParam();
  const std::string bytes_;  // every field, and an unknown one
  const std::unique_ptr<MessageLite> message_;
};

TEST_P(AllocationFailure, InParse) {
  EXPECT_GT(FailEach("parse", 0, [this] { type_.create()->ParsePartialFromString(bytes_); }), 0U);
  FailEach("parse on an arena", 0, [this] {
    Arena arena;
    type_.create_on(&arena)->ParsePartialFromString(bytes_);
  });
}

TEST_P(AllocationFailure, InCopyAndMerge) {
  EXPECT_GT(FailEach("copy construction", 0, [this] { type_.copy(*message_); }), 0U);
  FailEach("merge", 0, [this] { type_.merge_from(*type_.create(), *message_); });
  FailEach("swap across arenas", 0, [this] {
    Arena arena;
    const auto copy = type_.copy(*message_);
    type_.swap(*copy, *type_.create_on(&arena));
  });
}

TEST_P(AllocationFailure, InSerialize) {
  FailEach("serialize", 0, [this] {
    std::string out;
    message_->SerializePartialToString(&out);
  });
}

INSTANTIATE_TEST_SUITE_P(, AllocationFailure, ::testing::ValuesIn([] {
                           std::vector<const MessageType*> types;
                           for (const MessageType& type : AllMessageTypes()) types.push_back(&type);
                           return types;
                         }()));

// A setter that throws leaves the field present, with its old value.
TEST(AllocationFailureInSetter, FieldIsPresentAndUnchanged) {
  Dial dial;
  const std::string number(100, '1');
  {
    const FailingAllocations failing(1);
    EXPECT_THROW(dial.set_address(number), std::bad_alloc);
  }
  EXPECT_TRUE(dial.has_address());
  EXPECT_EQ(dial.address(), "");
  dial.set_address(number);
  EXPECT_EQ(dial.address(), number);
}

// Moving between arenas copies, yet is noexcept.
TEST(AllocationFailureInMove, EndsTheProcessAcrossArenas) {
  Arena arena;
  Dial* on_arena = Arena::CreateMessage<Dial>(&arena);
  on_arena->set_address(std::string(100, '1'));
  EXPECT_DEATH(
      {
        Dial dial;
        const FailingAllocations failing(1);
        dial = std::move(*on_arena);
      },
      "terminate|Abort|bad_alloc");
}

}  // namespace
}  // namespace virtual_modem::testing
