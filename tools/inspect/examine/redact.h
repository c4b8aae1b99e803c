// Masks subscriber data, so that a log can be shared.
#pragma once

#include <string>
#include <string_view>

#include "inspect/schema/schema.h"

namespace virtual_modem::inspect {

// The encoded form of the message with X for each character of a field of subscriber data and 0 for
// each number; lengths and counts stay. Unknown fields, whose meaning nobody knows, are dropped,
// and so is what stands behind a break. With shape, all strings and lists of numbers are masked:
// for bytes that may be of another type.
std::string Redact(const Schema& schema, const Descriptor& type, std::string_view bytes,
                   bool shape = false);
void Redact(const Schema& schema, Message& message);

}  // namespace virtual_modem::inspect
