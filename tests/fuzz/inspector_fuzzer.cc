// Fuzz target over the inspector's commands. Input: one byte that chooses the message type, one for
// command and options, then the file; for diff two files of equal size.
#include <google/protobuf/stubs/logging.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <iostream>
#include <string>
#include <string_view>

#include "check.h"
#include "inspect/commands.h"
#include "inspect/error.h"

namespace virtual_modem::inspect {
namespace {

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

Status Run(Schema& schema, const std::string& type, std::uint8_t choice, std::string_view bytes) {
  static const File file;
  static const File other;
  const auto from = static_cast<Encoding>(choice >> 2 & 3);
  const bool first = (choice & 0x10) != 0;
  const bool second = (choice & 0x20) != 0;
  const bool third = (choice & 0x40) != 0;
  switch (choice & 3) {
    case 0:
      return DecodeCommand(schema, {type, file.Holding(bytes), from, first, second, third});
    case 1:
      return EncodeCommand(schema, {type, file.Holding(bytes), from, first, second, third});
    case 2:
      return IdentifyCommand(schema, {file.Holding(bytes), from, first});
    default: {
      const std::size_t half = bytes.size() / 2;
      const std::string& left = file.Holding(bytes.substr(0, half));
      return DiffCommand(schema, {type, left, other.Holding(bytes.substr(half)), from, first});
    }
  }
}

}  // namespace
}  // namespace virtual_modem::inspect

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace virtual_modem::inspect;  // NOLINT: one function
  static Schema schema(DESCRIPTOR_SET);
  static const bool quiet = [] {
    std::cout.rdbuf(nullptr);
    std::cerr.rdbuf(nullptr);
    google::protobuf::SetLogHandler(nullptr);
    return true;
  }();
  if (size < 2 || !quiet) return -1;
  const std::string& type = schema.messages()[data[0] % schema.messages().size()]->full_name();
  try {
    Run(schema, type, data[1], {reinterpret_cast<const char*>(data) + 2, size - 2});
  } catch (const Error&) {
    // Bad input, as told to the user.
  }
  return 0;
}
