// What libvirtual-modem-text makes of messages, for compare_printers.py. Reads records from stdin
// until its end: type name and bytes. Answers each on stdout with seven sized records:
//
//   "1" when the bytes are a message, else "0"
//   the bytes that the library writes of it
//   shown on one line, shown on many lines, masked on one line
//   masked bytes
//   missing fields, a line each
//
// For what is no message, the texts and the masked bytes are those of the bytes.
#include <virtual_modem/text.h>
#include <virtual_modem/types.h>

#include <cstdlib>
#include <iostream>
#include <memory>
#include <optional>
#include <string>

#include "support/sized_records.h"

namespace virtual_modem::testing {
namespace {

constexpr TextOptions kShown{true, true, 0};
constexpr TextOptions kLines{true, false, 0};
constexpr TextOptions kMasked{false, true, 0};

int Answer(std::istream& in, std::ostream& out) {
  while (const std::optional<std::string> name = ReadSized(in)) {
    const Type* type = FindType(*name);
    const std::optional<std::string> bytes = ReadSized(in);
    if (type == nullptr || !bytes) {
      std::cerr << "library_printer: bad record, type '" << *name << "'\n";
      return EXIT_FAILURE;
    }
    const std::unique_ptr<google::protobuf::MessageLite> message(type->prototype->New());
    if (!message->ParsePartialFromString(*bytes)) {
      WriteSized(out, "0");
      WriteSized(out, "");
      for (const TextOptions& options : {kShown, kLines, kMasked}) {
        WriteSized(out, ToText(*name, *bytes, options));
      }
      WriteSized(out, MaskedBytes(*name, *bytes));
      WriteSized(out, "");
      continue;
    }
    WriteSized(out, "1");
    WriteSized(out, message->SerializePartialAsString());
    for (const TextOptions& options : {kShown, kLines, kMasked}) {
      WriteSized(out, ToText(*message, options));
    }
    WriteSized(out, MaskedBytes(*message));
    std::string missing;
    for (const std::string& path : MissingFields(*message)) missing += path + "\n";
    WriteSized(out, missing);
  }
  return EXIT_SUCCESS;
}

}  // namespace
}  // namespace virtual_modem::testing

int main() {
  std::ios::sync_with_stdio(false);
  return virtual_modem::testing::Answer(std::cin, std::cout);
}
