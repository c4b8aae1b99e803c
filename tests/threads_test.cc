// What several threads may do at once. Worth most under the thread sanitizer.
#include <gtest/gtest.h>
#include <virtual_modem/radio.pb.h>

#include <atomic>
#include <string>
#include <thread>
#include <vector>

#include "support/message_types.h"
#include "support/samples.h"
#include "virtual_modem/message_list.h"

namespace virtual_modem::testing {
namespace {

// Runs work in four threads that start together.
template <typename Work>
void InParallel(const Work& work) {
  constexpr int kThreads = 4;
  std::atomic<int> ready = 0;
  std::vector<std::thread> threads;
  threads.reserve(kThreads);
  for (int i = 0; i < kThreads; ++i) {
    threads.emplace_back([&] {
      ++ready;
      while (ready < kThreads) std::this_thread::yield();
      work();
    });
  }
  for (std::thread& thread : threads) thread.join();
}

// The first call builds the names of an enumeration; it must be the first in this process.
TEST(Threads, NameIsFirstUsedByAllAtOnce) {
#define NAME(name, cpp_type, unit) EXPECT_FALSE(cpp_type##_Name(cpp_type##_MAX).empty());
  InParallel([] { VIRTUAL_MODEM_ENUMS(NAME) });
#undef NAME
}

TEST(Threads, DifferentObjectsAreIndependent) {
  const MessageType& type = *FindMessageType("ImsCallStateChanged");
  const std::string bytes = Encode(SchemaOf(type.name), {{Values::kHigh}});
  InParallel([&] {
    const std::unique_ptr<MessageLite> message = type.create();
    for (int i = 0; i < 100; ++i) {
      EXPECT_TRUE(message->ParseFromString(bytes));
      EXPECT_EQ(message->SerializeAsString(), bytes);
      message->Clear();
      type.merge_from(*message, type.prototype);
    }
  });
}

}  // namespace
}  // namespace virtual_modem::testing
