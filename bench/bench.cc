// Measures the message classes on the messages of workloads.h. The same object code is linked
// against each build of the library that is compared; scripts/bench runs them and makes the table.
//
// Before anything is timed, the library and the straight-line codec must agree on every byte and
// every field. Besides Google Benchmark's options:
//   --check         does only that
//   --instructions  runs each operation under callgrind, which counts it: one dump per operation,
//                   named after it. Takes --benchmark_filter's place as a regular expression.
#include <benchmark/benchmark.h>
#include <google/protobuf/arena.h>
#include <valgrind/callgrind.h>

#include <cstdio>
#include <functional>
#include <regex>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "advice.h"
#include "straight_line.h"
#include "workloads.h"

namespace virtual_modem::bench {
namespace {

using Buffer = std::vector<std::uint8_t>;

// What a caller of the library does.
template <typename Record>
struct LibraryCodec {
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
struct StraightLineCodec {
  using Object = Record;

  static std::size_t Encode(const Record& record, Object& /*unused*/, Buffer& buffer) {
    StraightLineWriter writer(buffer.data());
    Record::ForEachField(record, writer);
    return writer.end() - buffer.data();
  }
  static std::uint64_t Decode(const Buffer& bytes, Object& record) {
    StraightLineReader reader(bytes.data(), bytes.data() + bytes.size());
    Record::ForEachField(record, reader);
    if (!reader.complete()) return 0;
    RecordDigest digest;
    Record::ForEachField(record, digest);
    return digest.sum();
  }
};

// The bytes of the record, or the reason why the codecs do not agree on them.
template <typename Record>
Buffer CheckedBytes(const std::string& name, const Record& record) {
  const auto require = [&name](bool holds, const char* what) {
    if (holds) return;
    std::fprintf(stderr, "bench: %s: %s\n", name.c_str(), what);
    std::exit(1);
  };
  typename Record::Message message;
  record.Fill(message);
  require(message.IsInitialized(), "the record leaves a required field absent");
  const std::string expected = message.SerializeAsString();

  Buffer bytes(expected.begin(), expected.end());
  Buffer written(bytes.size() + 16);
  Record decoded;
  const std::size_t size = StraightLineCodec<Record>::Encode(record, decoded, written);
  written.resize(size);
  require(written == bytes, "the straight-line codec writes other bytes than the library");

  message.Clear();
  const std::uint64_t digest = LibraryCodec<Record>::Decode(bytes, message);
  require(digest != 0, "the library does not read its own bytes");
  require(StraightLineCodec<Record>::Decode(bytes, decoded) == digest,
          "the straight-line codec reads other values than the library");
  typename Record::Message again;
  decoded.Fill(again);
  require(again.SerializeAsString() == expected, "the straight-line codec lost a value");
  return bytes;
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

template <template <typename> class Codec, typename Record>
void RegisterCodec(const std::string& name, const Record& record, const Buffer& bytes) {
  using Object = typename Codec<Record>::Object;
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
    return LibraryCodec<Record>::Decode(bytes, *message);
  });
}

template <typename Record>
void RegisterMessage(const std::string& name, const Record& record) {
  const Buffer bytes = CheckedBytes(name, record);
  RegisterCodec<LibraryCodec>("library/" + name, record, bytes);
  RegisterArena<Record>("library/" + name, bytes);
  RegisterCodec<StraightLineCodec>("straight_line/" + name, record, bytes);
}

// Cost as the work grows: "growth/KIND/OPERATION/SIZE". Each thread has objects of its own.
template <typename Record>
void RegisterGrowth(const std::string& kind, std::size_t size, const Record& record,
                    const std::vector<int>& threads = {}) {
  const Buffer bytes = CheckedBytes(kind, record);
  const auto encode = [record, length = bytes.size()](benchmark::State& state) {
    typename Record::Message message;
    Buffer buffer(length);
    for (auto _ : state) {
      benchmark::DoNotOptimize(LibraryCodec<Record>::Encode(record, message, buffer));
      benchmark::DoNotOptimize(buffer.data());
    }
  };
  const auto decode = [bytes](benchmark::State& state) {
    typename Record::Message message;
    for (auto _ : state) {
      benchmark::DoNotOptimize(LibraryCodec<Record>::Decode(bytes, message));
    }
  };
  const auto add = [&](const char* operation, auto run) {
    const std::string name = "growth/" + kind + "/" + operation + "/" + std::to_string(size);
    benchmark::internal::Benchmark* added = benchmark::RegisterBenchmark(name.c_str(), run);
    for (const int count : threads) added->Threads(count);
  };
  add("encode", encode);
  add("decode", decode);
}

void RegisterAll() {
  RegisterMessage("NoResultResponse", MakeNoResult());
  RegisterMessage("Dial", MakeDial());
  RegisterMessage("GetCurrentCallsResponse", MakeCurrentCalls());
  RegisterMessage("SignalStrengthChanged", MakeSignalChanged());
  RegisterMessage("SlaveSetupDataCallResponse", MakeSetupDataCall());
  RegisterMessage("IccCardStatusResponse", MakeCardStatus());
  RegisterMessage("ImsCallStateChanged", MakeImsCalls());
  for (const int calls : {1, 10, 100, 1000}) {
    RegisterGrowth("calls", calls, MakeCurrentCalls(calls));
  }
  for (std::size_t length = 16; length <= 64 * 1024; length *= 4) {
    RegisterGrowth("text_bytes", length, MakeDial(length));
  }
  RegisterGrowth("calls_by_threads", 3, MakeCurrentCalls(3), {1, 2, 4, 8});
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
  if (mode == "--check") {
    std::puts("bench: the library and the straight-line codec agree");
    return 0;
  }
  if (mode == "--instructions") {
    return virtual_modem::bench::CountInstructions(argc > 2 ? argv[2] : ".");
  }
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 2;
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
  return 0;
}
