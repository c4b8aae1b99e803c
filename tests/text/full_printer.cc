// What the full runtime's text printer makes of messages, for compare_printers.py.
// Usage: full_printer DESCRIPTOR_SET. Reads records from stdin until its end: type name and bytes;
// answers each on stdout with three sized records: the message on one line and on many, and the
// bytes that it writes of it. Links the full runtime and nothing of the library.
#include <google/protobuf/descriptor.h>
#include <google/protobuf/descriptor.pb.h>
#include <google/protobuf/dynamic_message.h>
#include <google/protobuf/message.h>
#include <google/protobuf/stubs/logging.h>

#include <cstdlib>
#include <fstream>
#include <iostream>
#include <memory>
#include <optional>
#include <string>

#include "support/sized_records.h"

int main(int argc, char** argv) {
  using virtual_modem::testing::ReadSized;
  using virtual_modem::testing::WriteSized;
  std::ios::sync_with_stdio(false);
  google::protobuf::SetLogHandler(nullptr);  // strings are bytes here, whatever it says of them
  google::protobuf::FileDescriptorSet files;
  std::ifstream set(argc == 2 ? argv[1] : "", std::ios::binary);
  if (!files.ParseFromIstream(&set)) {
    std::cerr << "full_printer: cannot read the descriptor set\n";
    return EXIT_FAILURE;
  }
  google::protobuf::DescriptorPool pool;
  for (const auto& file : files.file()) pool.BuildFile(file);
  google::protobuf::DynamicMessageFactory factory(&pool);

  while (const std::optional<std::string> name = ReadSized(std::cin)) {
    const google::protobuf::Descriptor* type = pool.FindMessageTypeByName(*name);
    const std::optional<std::string> bytes = ReadSized(std::cin);
    if (type == nullptr || !bytes) {
      std::cerr << "full_printer: bad record, type '" << *name << "'\n";
      return EXIT_FAILURE;
    }
    const std::unique_ptr<google::protobuf::Message> message(factory.GetPrototype(type)->New());
    if (!message->ParsePartialFromString(*bytes)) {
      std::cerr << "full_printer: refuses the bytes of a " << *name << "\n";
      return EXIT_FAILURE;
    }
    WriteSized(std::cout, message->ShortDebugString());
    WriteSized(std::cout, message->DebugString());
    WriteSized(std::cout, message->SerializePartialAsString());
  }
  return EXIT_SUCCESS;
}
