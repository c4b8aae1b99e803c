// "text/MESSAGE": the message as one line of text, everything shown, by the companion library or,
// in the build for the full runtime, by that runtime's printer on its own compiled classes. Usage:
// virtual-modem-bench-text-BUILD [--check | Google Benchmark's options]
//   --check  prints the texts, on which the two builds must agree
#include <benchmark/benchmark.h>

#include <cstdio>
#include <string>
#include <string_view>
#include <type_traits>

#include "workloads.h"

#ifdef VIRTUAL_MODEM_BENCH_FULL
#include <google/protobuf/text_format.h>
#else
#include <virtual_modem/text.h>
#endif

namespace virtual_modem::bench {
namespace {

#ifdef VIRTUAL_MODEM_BENCH_FULL
class Printer {
 public:
  Printer() { printer_.SetSingleLineMode(true); }
  std::string Print(const google::protobuf::Message& message) const {
    std::string text;
    printer_.PrintToString(message, &text);
    text.pop_back();  // the blank after the last field
    return text;
  }

 private:
  google::protobuf::TextFormat::Printer printer_;
};
#else
struct Printer {
  std::string Print(const google::protobuf::MessageLite& message) const {
    return ToText(message, {true, true, 0});
  }
};
#endif

void All(bool check) {
  ForEachMessage([check](const char* name, const auto& record) {
    typename std::decay_t<decltype(record)>::Message message;
    record.Fill(message);
    static const Printer printer;
    if (check) {
      std::printf("%s\n", printer.Print(message).c_str());
      return;
    }
    benchmark::RegisterBenchmark((std::string("text/") + name).c_str(),
                                 [message](benchmark::State& state) {
                                   for (auto _ : state) {
                                     benchmark::DoNotOptimize(printer.Print(message));
                                   }
                                 });
  });
}

}  // namespace
}  // namespace virtual_modem::bench

int main(int argc, char** argv) {
  const bool check = argc == 2 && std::string_view(argv[1]) == "--check";
  virtual_modem::bench::All(check);
  if (check) return 0;
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 2;
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
  return 0;
}
