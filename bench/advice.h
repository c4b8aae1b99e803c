#pragma once

namespace virtual_modem::bench {

// Registers the benchmarks behind the advice of docs/performance.md.
void RegisterAdvice();

}  // namespace virtual_modem::bench
