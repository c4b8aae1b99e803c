// From a type name to a class, over the generated list of all messages: the dispatch that every
// receiver needs, written once.
#pragma once

#include <google/protobuf/message_lite.h>

#include <string_view>
#include <unordered_map>

#include "virtual_modem/message_list.h"

namespace virtual_modem::exchange {

using google::protobuf::MessageLite;

// Calls visitor(m), m being the message as its own class: the visitor overloads operator() for the
// types it knows and has a template for the rest. Requires a message of this library.
template <typename Visitor>
void Visit(Visitor& visitor, const MessageLite& message) {
  using Call = void (*)(Visitor&, const MessageLite&);
#define ENTRY(name, cpp_class, unit) \
  {name,                             \
   [](Visitor& target, const MessageLite& base) { target(static_cast<const cpp_class&>(base)); }},
  static const std::unordered_map<std::string_view, Call> calls{VIRTUAL_MODEM_MESSAGES(ENTRY)};
#undef ENTRY
  calls.at(message.GetTypeName())(visitor, message);
}

// The default instance of the type of that name, or nullptr when there is no such type.
const MessageLite* FindPrototype(std::string_view type);

}  // namespace virtual_modem::exchange
