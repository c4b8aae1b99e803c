// Does one operation of the benchmark many times, for counting its instructions.
//
// Usage: virtual-modem-operations-BUILD [MESSAGE/OPERATION TIMES]
// Prints a digest of what it did, which must not depend on the build; without arguments, the
// operations.
#include "../operations.h"

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>

int main(int argc, char** argv) {
  const std::string wanted = argc > 2 ? argv[1] : "";
  const int times = argc > 2 ? std::atoi(argv[2]) : 0;
  virtual_modem::bench::ForEachMessage([&](const std::string& message, const auto& record) {
    virtual_modem::bench::ForEachOperation(record, [&](const char* operation, auto run) {
      const std::string name = message + '/' + operation;
      if (wanted.empty()) std::printf("%s\n", name.c_str());
      if (wanted != name) return;
      std::uint64_t digest = 0;
      for (int i = 0; i < times; ++i) {
        digest = (digest ^ virtual_modem::bench::Digest(run())) * 0x100000001b3;
      }
      std::printf("%016llx\n", static_cast<unsigned long long>(digest));
    });
  });
}
