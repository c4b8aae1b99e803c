// The reading side of encode, for the fuzz target too.
#pragma once

#include <google/protobuf/message.h>

#include <string>
#include <string_view>

namespace virtual_modem::inspect {

// The encoded form of a message written as JSON or in the text format, required fields present or
// not. The message gives the type; its content is dropped. Throws Error.
std::string EncodeMessage(std::string_view source, bool json, google::protobuf::Message& message);

}  // namespace virtual_modem::inspect
