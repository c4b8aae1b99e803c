// Times dlopen of one library in a process that has nothing of it in memory yet.
//
// Usage: virtual-modem-load-time lazy|bound [DEPENDENCY...] LIBRARY
// Loads the dependencies first, untimed, then the library, and prints "MICROSECONDS PAGE_FAULTS".
#include <dlfcn.h>
#include <sys/resource.h>

#include <chrono>
#include <cstdio>
#include <cstring>

namespace {

long PageFaults() {
  rusage usage{};
  getrusage(RUSAGE_SELF, &usage);
  return usage.ru_minflt + usage.ru_majflt;
}

bool Load(const char* library, int mode) {
  if (dlopen(library, mode) != nullptr) return true;
  std::fprintf(stderr, "load-time: %s\n", dlerror());
  return false;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < 3 || (std::strcmp(argv[1], "lazy") != 0 && std::strcmp(argv[1], "bound") != 0)) {
    std::fprintf(stderr, "usage: %s lazy|bound [DEPENDENCY...] LIBRARY\n", argv[0]);
    return 2;
  }
  const int mode = std::strcmp(argv[1], "lazy") == 0 ? RTLD_LAZY : RTLD_NOW;
  for (int i = 2; i < argc - 1; ++i) {
    if (!Load(argv[i], RTLD_NOW | RTLD_GLOBAL)) return 1;
  }
  const long faults_before = PageFaults();
  const auto start = std::chrono::steady_clock::now();
  if (!Load(argv[argc - 1], mode)) return 1;
  const auto end = std::chrono::steady_clock::now();
  const long faults = PageFaults() - faults_before;
  const double microseconds = std::chrono::duration<double, std::micro>(end - start).count();
  std::printf("%.1f %ld\n", microseconds, faults);
}
