// The library's end of a conversation with other implementations. Reads records from stdin until
// its end: type name and bytes. Answers each on stdout; peer.py speaks for the other side:
//
//   "initialized", "accepted" when required fields are missing, or "refused"
//   the bytes that the library writes of what it read
//   shown on one line, shown on many lines, masked on one line
//   masked bytes
//   missing fields, a line each
//
// For what is refused, the texts and the masked bytes are those of the bytes. Names, bytes and
// answers are sized records.
#include <virtual_modem/text.h>

#include <cstdlib>
#include <iostream>
#include <memory>
#include <optional>
#include <string>

#include "support/message_types.h"
#include "support/sized_records.h"

namespace virtual_modem::testing {
namespace {

constexpr TextOptions kTexts[] = {{true, true, 0}, {true, false, 0}, {false, true, 0}};

int Answer() {
  while (const std::optional<std::string> name = ReadSized(std::cin)) {
    const MessageType* const type = FindMessageType(*name);
    const std::optional<std::string> bytes = ReadSized(std::cin);
    if (type == nullptr || !bytes) {
      std::cerr << "peer: bad record, type '" << *name << "'\n";
      return EXIT_FAILURE;
    }
    const std::unique_ptr<MessageLite> message = type->create();
    const bool accepted = message->ParsePartialFromString(*bytes);
    const std::string written = accepted ? message->SerializePartialAsString() : std::string();
    WriteSized(std::cout, !accepted                  ? "refused"
                          : message->IsInitialized() ? "initialized"
                                                     : "accepted");
    WriteSized(std::cout, written);
    for (const TextOptions& options : kTexts) {
      WriteSized(std::cout, accepted ? ToText(*message, options) : ToText(*name, *bytes, options));
    }
    WriteSized(std::cout, accepted ? MaskedBytes(*message) : MaskedBytes(*name, *bytes));
    std::string missing;
    for (const std::string& path : MissingFields(*message)) missing += path + "\n";
    WriteSized(std::cout, missing);
  }
  return EXIT_SUCCESS;
}

}  // namespace
}  // namespace virtual_modem::testing

int main() {
  std::ios::sync_with_stdio(false);
  return virtual_modem::testing::Answer();
}
