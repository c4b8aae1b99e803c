// Times the first round trip of a calls list in a process that has done nothing before, then the
// second. Prints "FIRST SECOND FAULTS": microseconds each, and the page faults of the first.
#include <sys/resource.h>

#include <chrono>
#include <cstdio>
#include <string>

#include "workloads.h"

namespace {

using virtual_modem::bench::GetCurrentCallsResponseRecord;

long PageFaults() {
  rusage usage{};
  getrusage(RUSAGE_SELF, &usage);
  return usage.ru_minflt + usage.ru_majflt;
}

bool RoundTrip(const GetCurrentCallsResponseRecord& record) {
  GetCurrentCallsResponse sent;
  record.Fill(sent);
  std::string bytes;
  if (!sent.SerializeToString(&bytes)) return false;
  GetCurrentCallsResponse received;
  return received.ParseFromString(bytes) && GetCurrentCallsResponseRecord::Read(received) != 0;
}

}  // namespace

int main() {
  using Clock = std::chrono::steady_clock;
  using Microseconds = std::chrono::duration<double, std::micro>;
  const GetCurrentCallsResponseRecord record = virtual_modem::bench::MakeCurrentCalls();
  Clock::now();  // the clock's own first use
  const long faults_before = PageFaults();
  const auto start = Clock::now();
  if (!RoundTrip(record)) return 1;
  const auto middle = Clock::now();
  const long faults = PageFaults() - faults_before;
  const auto again = Clock::now();
  if (!RoundTrip(record)) return 1;
  const auto end = Clock::now();
  std::printf("%.2f %.2f %ld\n", Microseconds(middle - start).count(),
              Microseconds(end - again).count(), faults);
}
