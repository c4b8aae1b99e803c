// Fuzz target over the inspector's commands. Input: one byte that chooses the message type, one for
// command and options, then the file; for diff two files of equal size. log, mask and diff without
// a type read captures and logs.
#include <google/protobuf/stubs/logging.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <iostream>
#include <string>
#include <string_view>

#include "check.h"
#include "inspect/commands/commands.h"
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
  const std::size_t half = bytes.size() / 2;
  DecodeOptions decode;
  decode.type = type;
  decode.json = first;
  decode.mask = second;
  decode.delimited = third;
  EncodeOptions encode;
  encode.type = type;
  encode.to = from;
  encode.json = first;
  encode.partial = second;
  encode.delimited = third;
  DiffOptions diff;
  diff.type = type;
  diff.from = from;
  diff.mask = first;
  diff.trust_type = second;
  diff.delimited = third;
  LogOptions log;
  log.incomplete = (choice & 4) != 0;
  log.mask = (choice & 8) != 0;
  log.pairs = first;
  log.count = second;
  log.json = third;
  log.diagram = second && third;
  log.grep = third ? "calls.number~1" : "";
  switch (choice & 0x83) {
    case 0:
      decode.source = {file.Holding(bytes), from};
      return DecodeCommand(schema, decode);
    case 1:
      encode.file = file.Holding(bytes);
      return EncodeCommand(schema, encode);
    case 2:
      return IdentifyCommand(schema, {{file.Holding(bytes), from}, first});
    case 3:
      diff.left = file.Holding(bytes.substr(0, half));
      diff.right = other.Holding(bytes.substr(half));
      return DiffCommand(schema, diff);
    case 0x80:
      log.files = {file.Holding(bytes)};
      return LogCommand(schema, log);
    case 0x81:
      return MaskCommand(schema,
                         {{file.Holding(bytes)}, "/dev/null", third ? type : "", from, first});
    case 0x82:
      diff.type.clear();
      diff.delimited = false;
      diff.left = file.Holding(bytes);
      diff.right = file.Holding(bytes);
      return DiffCommand(schema, diff);
    default: {
      constexpr Encoding kOthers[] = {Encoding::kString, Encoding::kArray, Encoding::kLog,
                                      Encoding::kAuto};
      decode.source = {file.Holding(bytes), kOthers[choice >> 2 & 3]};
      return DecodeCommand(schema, decode);
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
