// Measures the message classes on the messages of workloads.h. The same object code is linked
// against each build of the library that is compared; scripts/bench runs them and prints the table.
//
// Besides Google Benchmark's options: --instructions [PATTERN] runs each operation under callgrind,
// which counts it: one dump per operation, named after it.
#include <benchmark/benchmark.h>
#include <google/protobuf/arena.h>
#include <valgrind/callgrind.h>

#include <functional>
#include <memory>
#include <regex>
#include <sstream>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "workloads.h"

namespace virtual_modem::bench {
namespace {

// Every operation, for counting its instructions one by one.
std::vector<std::pair<std::string, std::function<void(int times)>>> operations;

template <typename Operation>
void Register(const std::string& name, Operation operation) {
  benchmark::RegisterBenchmark(name.c_str(), [operation](benchmark::State& state) mutable {
    for (auto _ : state) benchmark::DoNotOptimize(operation());
  });
  operations.emplace_back(name, [operation](int times) mutable {
    for (int i = 0; i < times; ++i) benchmark::DoNotOptimize(operation());
  });
}

template <typename Message>
bool Serialize(const Message& message, std::string& buffer) {
  if (message.ByteSizeLong() > buffer.size()) return false;
  auto* const out = reinterpret_cast<std::uint8_t*>(buffer.data());
  return message.SerializeWithCachedSizesToArray(out) != nullptr;
}

// What a caller of the library does, from a record to bytes and back.
template <typename Record>
void RegisterCodec(const std::string& name, const Record& record) {
  using google::protobuf::Arena;
  using Message = typename Record::Message;
  Message filled;
  record.Fill(filled);
  const std::string bytes = filled.SerializeAsString();
  const auto decode = [bytes](Message& message) {
    const auto size = static_cast<int>(bytes.size());
    return message.ParseFromArray(bytes.data(), size) ? Record::Read(message) : 0;
  };

  Register(name + "/encode", [record, message = Message(), buffer = bytes]() mutable {
    message.Clear();
    record.Fill(message);
    return Serialize(message, buffer);
  });
  Register(name + "/encode_fresh", [record, buffer = bytes]() mutable {
    Message message;
    record.Fill(message);
    return Serialize(message, buffer);
  });
  Register(name + "/decode_reused",
           [decode, message = Message()]() mutable { return decode(message); });
  Register(name + "/decode_fresh", [decode] {
    Message message;
    return decode(message);
  });
  struct Block {
    alignas(8) char bytes[16 * 1024];
  };
  Register(name + "/decode_arena", [decode, block = std::make_shared<Block>()] {
    Arena arena(block->bytes, sizeof block->bytes);
    return decode(*Arena::CreateMessage<Message>(&arena));
  });

  // Of a message that is filled already.
  Register(name + "/to_buffer",
           [filled, buffer = bytes]() mutable { return Serialize(filled, buffer); });
  Register(name + "/to_array", [filled, buffer = bytes]() mutable {
    return filled.SerializeToArray(buffer.data(), static_cast<int>(buffer.size()));
  });
  Register(name + "/to_string", [filled] { return filled.SerializeAsString(); });
  Register(name + "/to_ostream", [filled] {
    std::ostringstream out;
    return filled.SerializeToOstream(&out);
  });
}

// One callgrind dump per operation, each for kTimes executions after one to warm up.
int CountInstructions(const std::string& filter) {
  constexpr int kTimes = 100;
  const std::regex wanted(filter);
  for (const auto& [name, run] : operations) {
    if (!std::regex_search(name, wanted)) continue;
    run(1);
    CALLGRIND_ZERO_STATS;
    CALLGRIND_TOGGLE_COLLECT;
    run(kTimes);
    CALLGRIND_TOGGLE_COLLECT;
    CALLGRIND_DUMP_STATS_AT(name.c_str());
  }
  return 0;
}

}  // namespace
}  // namespace virtual_modem::bench

int main(int argc, char** argv) {
  const std::string_view mode = argc > 1 ? argv[1] : "";
  virtual_modem::bench::ForEachMessage([](const std::string& name, const auto& record) {
    virtual_modem::bench::RegisterCodec("library/" + name, record);
  });
  if (mode == "--instructions") {
    return virtual_modem::bench::CountInstructions(argc > 2 ? argv[2] : ".");
  }
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 2;
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
  return 0;
}
