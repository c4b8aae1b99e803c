// The library's end of a conversation with another implementation. Reads records from stdin until
// its end and answers each on stdout; peer.py speaks for the other side.
//
// Record: type name and bytes. Answer: a byte of flags (1 accepted, 2 accepted and initialized),
// then the bytes that the library writes of what it read. Names and bytes are sized records.
#include <google/protobuf/io/zero_copy_stream_impl_lite.h>

#include <cstdlib>
#include <iostream>
#include <memory>
#include <optional>
#include <string>

#include "support/message_types.h"
#include "support/sized_records.h"

namespace virtual_modem::testing {
namespace {

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
