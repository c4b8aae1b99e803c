// Prints what hostile input can cost for each message, as the table of docs/hostile-input.md.

#include <pthread.h>
#include <sys/mman.h>

#include <algorithm>
#include <cstddef>
#include <cstdio>
#include <ctime>
#include <limits>
#include <string>
#include <vector>

#include "bounds/hostile_inputs.h"
#include "bounds/measure.h"
#include "support/message_types.h"
#include "support/wire.h"

namespace virtual_modem::testing {
namespace {

constexpr std::size_t kInputSize = 64 << 10;

struct Cost {
  std::string message;
  double heap_per_byte = 0;
  std::string by;         // the input that takes this much
  std::size_t fixed = 0;  // bytes of heap with every singular field once
  double ns_per_byte = 0;
  int depth = 0;
};

// Processor time, the least of a few runs: what disturbs a run only makes it slower.
double NanosecondsOfParse(const MessageType& type, const std::string& bytes) {
  const auto now = [] {
    timespec time{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return 1e9 * static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec);
  };
  double best = std::numeric_limits<double>::infinity();
  for (int run = 0; run < 10; ++run) {
    const double start = now();
    type.create()->ParsePartialFromString(bytes);
    best = std::min(best, now() - start);
  }
  return best;
}

Cost Measure(const MessageType& type) {
  const MessageSchema& schema = SchemaOf(type.name);
  Cost cost;
  cost.message = type.name;
  cost.fixed = PeakOfParse(type, EveryFieldOnce(schema));
  cost.depth = Depth(schema);
  for (const HostileInput& input : HostileInputs(schema)) {
    // Containers grow in steps: the peak depends on how far the last step is away.
    for (std::size_t size = kInputSize; size > kInputSize / 2; size -= kInputSize / 32) {
      const std::string bytes = input.Bytes(size);
      const double per_byte =
          static_cast<double>(PeakOfParse(type, bytes)) / static_cast<double>(bytes.size());
      if (per_byte > cost.heap_per_byte) {
        cost.heap_per_byte = per_byte;
        cost.by = input.what();
      }
    }
    const std::string bytes = input.Bytes(kInputSize);
    cost.ns_per_byte = std::max(
        cost.ns_per_byte, NanosecondsOfParse(type, bytes) / static_cast<double>(bytes.size()));
  }
  return cost;
}

// Bytes of stack that the function takes: it runs on a painted stack of its own.
std::size_t StackOf(void (*function)()) {
  constexpr std::size_t kSize = 1 << 20;
  constexpr unsigned char kPaint = 0xa5;
  void* stack = mmap(nullptr, kSize, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  if (stack == MAP_FAILED) return 0;
  auto* bytes = static_cast<unsigned char*>(stack);
  std::fill_n(bytes, kSize, kPaint);
  pthread_attr_t attributes;
  pthread_attr_init(&attributes);
  pthread_attr_setstack(&attributes, stack, kSize);
  pthread_t thread{};
  const auto run = [](void* argument) -> void* {
    reinterpret_cast<void (*)()>(argument)();
    return nullptr;
  };
  pthread_create(&thread, &attributes, run, reinterpret_cast<void*>(function));
  pthread_join(thread, nullptr);
  pthread_attr_destroy(&attributes);
  const auto* deepest = std::find_if(bytes, bytes + kSize, [](auto b) { return b != kPaint; });
  const auto used = static_cast<std::size_t>(bytes + kSize - deepest);
  munmap(stack, kSize);
  return used;
}

void ParseNestedGroups() {
  std::string bytes;
  for (int level = 0; level < 100; ++level) bytes = wire::GroupField(99, bytes);
  AllMessageTypes().front().create()->ParsePartialFromString(bytes);
}

void PrintTable() {
  std::vector<Cost> costs;
  for (const MessageType& type : AllMessageTypes()) costs.push_back(Measure(type));
  std::stable_sort(costs.begin(), costs.end(), [](const Cost& left, const Cost& right) {
    return left.heap_per_byte > right.heap_per_byte;
  });
  std::printf("Stack for 100 levels of unknown groups, the deepest that is read: %zu KB.\n\n",
              (StackOf(ParseNestedGroups) - StackOf([] {})) >> 10);
  std::printf("| Message | Heap per byte | by | Every field once | ns per byte | Levels |\n");
  std::printf("| --- | ---: | --- | ---: | ---: | ---: |\n");
  for (const Cost& cost : costs) {
    std::printf("| `%s` | %.1f | %s | %zu | %.1f | %d |\n", cost.message.c_str(),
                cost.heap_per_byte, cost.by.c_str(), cost.fixed, cost.ns_per_byte, cost.depth);
  }
}

}  // namespace
}  // namespace virtual_modem::testing

int main() { virtual_modem::testing::PrintTable(); }
