// Does one operation on one message of the benchmark many times, for counting its instructions.
//
// Usage: virtual-modem-operations-BUILD MESSAGE encode|kept|new TIMES
// MESSAGE is an index; without arguments it prints how many there are. "kept" decodes into one
// object, "new" into a new one each time. Prints a digest of the bytes or fields, which must not
// depend on the build.
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "../workloads.h"

namespace virtual_modem::bench {
namespace {

std::uint64_t Mix(std::uint64_t digest, std::uint64_t value) {
  return (digest ^ value) * 0x100000001b3;
}

template <typename Record>
std::uint64_t Repeat(const Record& record, std::string_view operation, int times) {
  using Message = typename Record::Message;
  Message message;
  record.Fill(message);
  std::string bytes = message.SerializeAsString();
  const int size = static_cast<int>(bytes.size());
  std::uint64_t digest = 0;
  for (int i = 0; i < times; ++i) {
    if (operation == "encode") {
      message.Clear();
      record.Fill(message);
      digest = Mix(digest, message.ByteSizeLong());
      message.SerializeWithCachedSizesToArray(reinterpret_cast<std::uint8_t*>(bytes.data()));
    } else if (operation == "kept") {
      if (!message.ParseFromArray(bytes.data(), size)) return 0;
      digest = Mix(digest, Record::Read(message));
    } else {
      Message fresh;
      if (!fresh.ParseFromArray(bytes.data(), size)) return 0;
      digest = Mix(digest, Record::Read(fresh));
    }
  }
  for (const char byte : bytes) digest = Mix(digest, static_cast<unsigned char>(byte));
  return digest;
}

using Repeater = std::function<std::uint64_t(std::string_view operation, int times)>;

std::vector<Repeater> Repeaters() {
  std::vector<Repeater> all;
  ForEachMessage([&all](const char* /*name*/, const auto& record) {
    all.emplace_back([record](std::string_view operation, int times) {
      return Repeat(record, operation, times);
    });
  });
  return all;
}

}  // namespace
}  // namespace virtual_modem::bench

int main(int argc, char** argv) {
  const auto messages = virtual_modem::bench::Repeaters();
  if (argc == 1) {
    std::printf("%zu\n", messages.size());
    return 0;
  }
  const std::string_view operation = argc == 4 ? argv[2] : "";
  if (operation != "encode" && operation != "kept" && operation != "new") {
    std::fprintf(stderr, "usage: %s [MESSAGE encode|kept|new TIMES]\n", argv[0]);
    return 2;
  }
  const auto& repeat = messages.at(std::strtoul(argv[1], nullptr, 10));
  const int times = static_cast<int>(std::strtol(argv[3], nullptr, 10));
  std::printf("%016llx\n", static_cast<unsigned long long>(repeat(operation, times)));
}
