// What a fuzz target demands. Unlike assert() it stays in optimised builds.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>

#define FUZZ_CHECK(condition, what)                                                    \
  do {                                                                                 \
    if (!(condition)) {                                                                \
      std::fprintf(stderr, "%s:%d: %s: %s\n", __FILE__, __LINE__, (what), #condition); \
      std::abort();                                                                    \
    }                                                                                  \
  } while (false)

// Which of so many types an input's first byte chooses; of more than 256 the second has a say too.
inline std::size_t ChosenType(const std::uint8_t* input, std::size_t types) {
  return (input[0] + 256 * (input[1] % ((types + 255) / 256))) % types;
}
