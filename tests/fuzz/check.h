// What a fuzz target demands. Unlike assert() it stays in optimised builds.
#pragma once

#include <cstdio>
#include <cstdlib>

#define FUZZ_CHECK(condition, what)                                                    \
  do {                                                                                 \
    if (!(condition)) {                                                                \
      std::fprintf(stderr, "%s:%d: %s: %s\n", __FILE__, __LINE__, (what), #condition); \
      std::abort();                                                                    \
    }                                                                                  \
  } while (false)
