// What a person wants to know of a message, in half a line. Lite messages cannot print themselves,
// so a program says which of their fields matter to it.
#pragma once

#include <google/protobuf/message_lite.h>

#include <cstdint>
#include <optional>
#include <string>

namespace virtual_modem::exchange {

using google::protobuf::MessageLite;

// Empty for a type of which this example shows nothing. Bytes that do not print are shown as '?'.
std::string Essentials(const MessageLite& message);

// The serial of a request or response; nothing for other messages, or when it is absent.
std::optional<std::int32_t> SerialOf(const MessageLite& message);

}  // namespace virtual_modem::exchange
