// A file that is written whole or not at all.
#pragma once

#include <cstdio>
#include <string>
#include <string_view>

namespace virtual_modem::inspect {

// Writes beside the path, or what it is a link to, and puts the result there in the end, with the
// permissions of the file that it replaces; "-" is standard output. Throws Error.
class FileToWrite {
 public:
  explicit FileToWrite(const std::string& path);
  // Without Keep(), what is at the path stays as it was.
  ~FileToWrite();
  FileToWrite(const FileToWrite&) = delete;
  FileToWrite& operator=(const FileToWrite&) = delete;

  void Write(std::string_view bytes);
  void Keep();

 private:
  [[noreturn]] void Fail() const;

  const std::string path_;
  std::string target_ = path_;
  std::string temporary_;  // empty for special files, which are written in place
  std::FILE* file_ = nullptr;
};

}  // namespace virtual_modem::inspect
