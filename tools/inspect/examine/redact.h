// Masks subscriber data, so that a log can be shared.
#pragma once

#include <string>
#include <string_view>

#include "inspect/schema/schema.h"

namespace virtual_modem::inspect {

// The encoded form of the message with X for each character of a field of subscriber data and 0 for
// each number; lengths and counts stay. So are the values of unknown fields, whose meaning nobody
// knows, and what stands after a break (text/mask.h). With shape, all strings and lists of numbers
// are masked: for bytes that may be of another type.
std::string Redact(const Schema& schema, const Descriptor& type, std::string_view bytes,
                   bool shape = false);
void Redact(const Schema& schema, Message& message);

}  // namespace virtual_modem::inspect
