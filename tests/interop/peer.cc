// The library's end of a conversation with another implementation. Reads records from stdin until
// its end and answers each on stdout; peer.py speaks for the other side.
//
// Record: type name and bytes. Answer: a byte of flags (1 accepted, 2 accepted and initialized),
// then the bytes that the library writes of what it read. Names and bytes are preceded by their
// size (4 bytes, little-endian).
#include <google/protobuf/io/zero_copy_stream_impl_lite.h>

#include <array>
#include <cstdint>
#include <cstdlib>
#include <iostream>
#include <memory>
#include <optional>
#include <string>

#include "support/message_types.h"

namespace virtual_modem::testing {
namespace {

// Nothing at the end of the input.
std::optional<std::string> ReadSized(std::istream& in) {
  std::array<unsigned char, 4> size{};
  if (!in.read(reinterpret_cast<char*>(size.data()), size.size())) return std::nullopt;
  std::string bytes(size[0] | size[1] << 8 | size[2] << 16 | std::uint32_t{size[3]} << 24, '\0');
  if (!in.read(bytes.data(), static_cast<std::streamsize>(bytes.size()))) return std::nullopt;
  return bytes;
}

void WriteSized(std::ostream& out, const std::string& bytes) {
  for (int shift = 0; shift < 32; shift += 8) out.put(static_cast<char>(bytes.size() >> shift));
  out << bytes;
}

// Through a stream in pieces so small that every field crosses from one to the next.
bool ParsesAlikeInPieces(const MessageType& type, const std::string& bytes, bool accepted,
                         const std::string& written) {
  google::protobuf::io::ArrayInputStream pieces(bytes.data(), static_cast<int>(bytes.size()), 3);
  const std::unique_ptr<MessageLite> message = type.create();
  return message->ParsePartialFromZeroCopyStream(&pieces) == accepted &&
         (!accepted || message->SerializePartialAsString() == written);
}

int Answer(std::istream& in, std::ostream& out) {
  while (const std::optional<std::string> name = ReadSized(in)) {
    const MessageType* const type = FindMessageType(*name);
    const std::optional<std::string> bytes = ReadSized(in);
    if (type == nullptr || !bytes) {
      std::cerr << "peer: bad record, type '" << *name << "'\n";
      return EXIT_FAILURE;
    }
    const std::unique_ptr<MessageLite> message = type->create();
    const bool accepted = message->ParsePartialFromString(*bytes);
    const std::string written = accepted ? message->SerializePartialAsString() : std::string();
    if (!ParsesAlikeInPieces(*type, *bytes, accepted, written)) {
      std::cerr << "peer: a stream in pieces is read otherwise, type '" << *name << "'\n";
      return EXIT_FAILURE;
    }
    const bool initialized = accepted && message->IsInitialized();
    out.put(static_cast<char>((accepted ? 1 : 0) | (initialized ? 2 : 0)));
    WriteSized(out, written);
  }
  return EXIT_SUCCESS;
}

}  // namespace
}  // namespace virtual_modem::testing

int main() {
  std::ios::sync_with_stdio(false);
  return virtual_modem::testing::Answer(std::cin, std::cout);
}
