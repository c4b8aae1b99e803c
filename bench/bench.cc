// Measures the message classes on the messages of workloads.h. The same object code is linked
// against each build of the library that is compared; scripts/bench runs them and prints the table.
//
// Besides Google Benchmark's options: --instructions [PATTERN] runs each operation under callgrind,
// which counts it: one dump per operation, named after it.
#include <benchmark/benchmark.h>
#include <google/protobuf/arena.h>
#include <valgrind/callgrind.h>

#include <functional>
#include <regex>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "advice.h"
#include "workloads.h"

namespace virtual_modem::bench {
namespace {

using Buffer = std::vector<std::uint8_t>;

// What a caller of the library does.
template <typename Record>
struct Codec {
  using Object = typename Record::Message;

  static std::size_t Encode(const Record& record, Object& message, Buffer& buffer) {
    message.Clear();
    record.Fill(message);
    const std::size_t size = message.ByteSizeLong();
    if (size > buffer.size()) return 0;
    message.SerializeWithCachedSizesToArray(buffer.data());
    return size;
  }
  static std::uint64_t Decode(const Buffer& bytes, Object& message) {
    if (!message.ParseFromArray(bytes.data(), static_cast<int>(bytes.size()))) return 0;
    return Record::Read(message);
  }
};

template <typename Record>
Buffer Bytes(const Record& record) {
  typename Record::Message message;
  record.Fill(message);
  const std::string bytes = message.SerializeAsString();
  return Buffer(bytes.begin(), bytes.end());
}

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

template <typename Record>
void RegisterCodec(const std::string& name, const Record& record, const Buffer& bytes) {
  using Object = typename Record::Message;
  Register(name + "/encode", [record, object = Object(), scratch = bytes]() mutable {
    benchmark::DoNotOptimize(scratch.data());
    return Codec<Record>::Encode(record, object, scratch);
  });
  Register(name + "/decode_reused",
           [bytes, object = Object()]() mutable { return Codec<Record>::Decode(bytes, object); });
  Register(name + "/decode_fresh", [bytes] {
    Object object;
    return Codec<Record>::Decode(bytes, object);
  });
  Register(name + "/round_trip",
           [record, sent = Object(), received = Object(), scratch = bytes]() mutable {
             benchmark::DoNotOptimize(scratch.data());
             Codec<Record>::Encode(record, sent, scratch);
             return Codec<Record>::Decode(scratch, received);
           });
}

template <typename Record>
void RegisterArena(const std::string& name, const Buffer& bytes) {
  using google::protobuf::Arena;
  struct ReusedArena {
    alignas(8) char block[16 * 1024];
    Arena arena{block, sizeof block};
  };
  const auto memory = std::make_shared<ReusedArena>();
  Register(name + "/arena_reused", [bytes, memory] {
    memory->arena.Reset();
    auto* message = Arena::CreateMessage<typename Record::Message>(&memory->arena);
    return Codec<Record>::Decode(bytes, *message);
  });
}

template <typename Record>
void RegisterMessage(const std::string& name, const Record& record) {
  const Buffer bytes = Bytes(record);
  RegisterCodec("library/" + name, record, bytes);
  RegisterArena<Record>("library/" + name, bytes);
}

void RegisterAll() {
  RegisterMessage("NoResultResponse", MakeNoResult());
  RegisterMessage("Dial", MakeDial());
  RegisterMessage("GetCurrentCallsResponse", MakeCurrentCalls());
  RegisterMessage("SignalStrengthChanged", MakeSignalChanged());
  RegisterMessage("SlaveSetupDataCallResponse", MakeSetupDataCall());
  RegisterMessage("IccCardStatusResponse", MakeCardStatus());
  RegisterMessage("ImsCallStateChanged", MakeImsCalls());
  RegisterAdvice();
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
  virtual_modem::bench::RegisterAll();
  if (mode == "--instructions") {
    return virtual_modem::bench::CountInstructions(argc > 2 ? argv[2] : ".");
  }
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 2;
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
  return 0;
}
