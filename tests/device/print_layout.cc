// Prints size and alignment of every message object in bytes, to compare targets with each other.
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <string>

#include "virtual_modem/message_list.h"

int main() {
  std::printf("%-40s %5zu %3zu\n", "void*", sizeof(void*), alignof(void*));
  std::printf("%-40s %5zu %3zu\n", "std::size_t", sizeof(std::size_t), alignof(std::size_t));
  std::printf("%-40s %5zu %3zu\n", "std::int64_t", sizeof(std::int64_t), alignof(std::int64_t));
  std::printf("%-40s %5zu %3zu\n", "std::string", sizeof(std::string), alignof(std::string));
  std::size_t total = 0;
#define X(type_name, cpp_class, unit)                                                 \
  std::printf("%-40s %5zu %3zu\n", type_name, sizeof(cpp_class), alignof(cpp_class)); \
  total += sizeof(cpp_class);
  VIRTUAL_MODEM_MESSAGES(X)
#undef X
  std::printf("%-40s %5zu\n", "all messages", total);
}
