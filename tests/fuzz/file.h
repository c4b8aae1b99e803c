#pragma once

#include <sys/mman.h>
#include <unistd.h>

#include <string>
#include <string_view>

#include "check.h"

// A file in memory, with a path for the commands to open.
class File {
 public:
  File() : fd_(memfd_create("input", 0)), path_("/proc/self/fd/" + std::to_string(fd_)) {}
  File(const File&) = delete;
  File& operator=(const File&) = delete;
  ~File() { close(fd_); }

  const std::string& Holding(std::string_view bytes) const {
    FUZZ_CHECK(ftruncate(fd_, 0) == 0, "ftruncate");
    FUZZ_CHECK(pwrite(fd_, bytes.data(), bytes.size(), 0) == static_cast<ssize_t>(bytes.size()),
               "pwrite");
    return path_;
  }

 private:
  int fd_;
  std::string path_;
};
