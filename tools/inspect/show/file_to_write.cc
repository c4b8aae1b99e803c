#include "inspect/show/file_to_write.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <system_error>

#include "inspect/error.h"

namespace virtual_modem::inspect {

FileToWrite::FileToWrite(const std::string& path) : path_(path) {
  if (path_ == "-") {
    file_ = stdout;
    return;
  }
  std::error_code ignored;
  if (std::filesystem::is_symlink(path_, ignored)) {
    target_ = std::filesystem::canonical(path_, ignored).string();
    if (target_.empty()) throw Error(path_ + ": a symbolic link to a file that does not exist");
  }
  struct stat old {};
  if (stat(target_.c_str(), &old) == 0 && !S_ISREG(old.st_mode)) {
    file_ = std::fopen(target_.c_str(), "wbe");
  } else {
    temporary_ = target_ + ".XXXXXX";
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
  struct stat old {};
  if (stat(target_.c_str(), &old) == 0 && fchmod(fileno(file_), old.st_mode & 0777U) != 0) Fail();
  if (std::rename(temporary_.c_str(), target_.c_str()) != 0) Fail();
  temporary_.clear();
}

}  // namespace virtual_modem::inspect
