// What code does, counted: the same on every machine, however busy.
#pragma once

#include <cstdint>

// Branches taken in code compiled with -fsanitize-coverage=trace-pc, bytes that it searched with
// memchr (by --wrap of the linker), and bytes that the program allocated with new.
std::uint64_t WorkSoFar();
