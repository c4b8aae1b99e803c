// Holds messages for gdb to look at: reads records from stdin until its end, each a type name and
// bytes, and aborts. Every other message is on an arena.
#include <google/protobuf/arena.h>
#include <virtual_modem/message_list.h>

#include <cstdlib>
#include <iostream>
#include <optional>
#include <string>

#include "support/message_types.h"
#include "support/sized_records.h"

namespace virtual_modem::testing {
namespace {

// Has the compiler describe the class.
template <typename Message>
bool Described() {
  const Message& message = Message::default_instance();
  return message.ByteSizeLong() == 0;
}

#define DESCRIBE(name, cpp_class, unit) &&Described<cpp_class>()
bool AllDescribed() { return true VIRTUAL_MODEM_MESSAGES(DESCRIBE); }
#undef DESCRIBE

}  // namespace
}  // namespace virtual_modem::testing

int main() {
  using namespace virtual_modem::testing;
  Arena arena;
  MessageLite* messages[2000] = {};
  int count = 0;
  while (const std::optional<std::string> name = ReadSized(std::cin)) {
    const MessageType* const type = FindMessageType(*name);
    const std::optional<std::string> bytes = ReadSized(std::cin);
    if (type == nullptr || !bytes || count == 2000) return EXIT_FAILURE;
    messages[count] = type->prototype.New(count % 2 == 0 ? nullptr : &arena);
    if (!messages[count++]->ParsePartialFromString(*bytes)) return EXIT_FAILURE;
  }
  if (!AllDescribed()) return EXIT_FAILURE;
  std::abort();
}
