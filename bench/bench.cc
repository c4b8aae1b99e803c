// Measures the operations of operations.h on the messages of workloads.cc. The same object code is
// linked against each build of the library that is compared; scripts/bench runs them and prints the
// table.
//
// "library/MESSAGE/OPERATION" encodes or decodes; "text/MESSAGE" prints the message as one line, by
// the companion library or by the full runtime's printer. Some builds have neither.
//
// Besides Google Benchmark's options: --instructions [PATTERN] runs each operation under callgrind,
// which counts it: one dump per operation, named after it. --check prints the texts, on which both
// printers must agree.
#include <benchmark/benchmark.h>
#include <valgrind/callgrind.h>

#include <cstdio>
#include <functional>
#include <regex>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <vector>

#include "operations.h"

#if defined(VIRTUAL_MODEM_BENCH_FULL)
#include <google/protobuf/text_format.h>
#elif defined(VIRTUAL_MODEM_BENCH_COMPANION)
#include <virtual_modem/text.h>
#endif

namespace virtual_modem::bench {
namespace {

// Every operation, for counting its instructions one by one.
std::vector<std::pair<std::string, std::function<void(int times)>>> operations;
std::vector<std::string> texts;

template <typename Operation>
void Register(const std::string& name, Operation operation) {
  benchmark::RegisterBenchmark(name.c_str(), [operation](benchmark::State& state) mutable {
    for (auto _ : state) benchmark::DoNotOptimize(operation());
  });
  operations.emplace_back(name, [operation](int times) mutable {
    for (int i = 0; i < times; ++i) benchmark::DoNotOptimize(operation());
  });
}

#if defined(VIRTUAL_MODEM_BENCH_FULL)
struct Printer : google::protobuf::TextFormat::Printer {
  Printer() { SetSingleLineMode(true); }
  std::string Print(const google::protobuf::Message& message) const {
    std::string text;
    PrintToString(message, &text);
    text.pop_back();  // the blank after the last field
    return text;
  }
};
#elif defined(VIRTUAL_MODEM_BENCH_COMPANION)
struct Printer {
  std::string Print(const google::protobuf::MessageLite& message) const {
    return ToText(message, {true, true, 0});
  }
};
#else
using Printer = void;
#endif

template <typename P, typename Record>
void RegisterText(const std::string& name, const Record& record) {
  if constexpr (!std::is_void_v<P>) {
    typename Record::Message message;
    record.Fill(message);
    static const P printer;
    texts.push_back(printer.Print(message));
    Register(name, [message] { return printer.Print(message); });
  }
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
    virtual_modem::bench::ForEachOperation(record, [&name](const char* operation, auto run) {
      virtual_modem::bench::Register("library/" + name + '/' + operation, run);
    });
    virtual_modem::bench::RegisterText<virtual_modem::bench::Printer>("text/" + name, record);
  });
  if (mode == "--check") {
    for (const std::string& text : virtual_modem::bench::texts) std::printf("%s\n", text.c_str());
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
