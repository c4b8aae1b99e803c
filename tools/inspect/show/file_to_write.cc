#include "inspect/show/file_to_write.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>

#include "inspect/error.h"

namespace virtual_modem::inspect {

FileToWrite::FileToWrite(const std::string& path) : path_(path) {
  struct stat info {};
  const bool special = stat(path.c_str(), &info) == 0 && !S_ISREG(info.st_mode);
  if (path == "-") {
    file_ = stdout;
  } else if (special) {
    file_ = std::fopen(path.c_str(), "wbe");
  } else {
    temporary_ = path + ".XXXXXX";
    const int fd = mkstemp(temporary_.data());  // for the owner alone: it may hold anything
    file_ = fd < 0 ? nullptr : fdopen(fd, "wb");
    if (file_ == nullptr) temporary_.clear();
  }
  if (file_ == nullptr) Fail();
}

FileToWrite::~FileToWrite() {
  if (file_ != nullptr && file_ != stdout) std::fclose(file_);
  if (!temporary_.empty()) unlink(temporary_.c_str());
}

void FileToWrite::Fail() const {
  throw Error((path_ == "-" ? "standard output" : path_) + ": " + std::strerror(errno));
}

void FileToWrite::Write(std::string_view bytes) {
  if (std::fwrite(bytes.data(), 1, bytes.size(), file_) != bytes.size()) Fail();
}

void FileToWrite::Keep() {
  if (std::fflush(file_) != 0) Fail();
  if (temporary_.empty()) return;
  if (std::rename(temporary_.c_str(), path_.c_str()) != 0) Fail();
  temporary_.clear();
}

}  // namespace virtual_modem::inspect
