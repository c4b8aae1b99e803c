// Every message of the library as a table, for tests and fuzz targets that treat all of them alike.
// The entries come from the generated message list.
#pragma once

#include <google/protobuf/arena.h>
#include <google/protobuf/message_lite.h>

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace virtual_modem::testing {

using google::protobuf::Arena;
using google::protobuf::MessageLite;

// One message type. MessageLite gives the virtual operations; the functions here reach what only
// the class itself has. Every MessageLite passed to them must be of this type.
struct MessageType {
  std::string_view name;  // as GetTypeName() returns it
  std::string_view unit;  // schema file without its ending
  const MessageLite& prototype;

  std::unique_ptr<MessageLite> (*copy)(const MessageLite& from);  // copy constructor
  MessageLite* (*create_on)(Arena* arena);                        // owned by the arena
  void (*copy_from)(MessageLite& to, const MessageLite& from);
  void (*merge_from)(MessageLite& to, const MessageLite& from);
  void (*swap)(MessageLite& left, MessageLite& right);

  std::unique_ptr<MessageLite> create() const {
    return std::unique_ptr<MessageLite>(prototype.New());
  }
};

const std::vector<MessageType>& AllMessageTypes();

// The type of that name, or nullptr.
const MessageType* FindMessageType(std::string_view name);

}  // namespace virtual_modem::testing
