// Messages as JSON and back, with the schema's own field names.
#pragma once

#include <string>
#include <string_view>

#include "inspect/examine/findings.h"
#include "inspect/schema/schema.h"

namespace virtual_modem::inspect {

// Appends the message as JSON, in lines or on one, without a separator at its end. Fields stand in
// the order of the bytes, so these must be as a serializer writes them. An undeclared number of an
// enumeration appears in its field as a number; other unknown fields are left out.
//
// JSON is UTF-8 where strings of the schema are any bytes: each byte that does not fit is shown as
// "?", and a finding names the field.
void AppendJson(const Schema& schema, unsigned message, std::string_view bytes, bool in_lines,
                std::string& json, Findings& findings);

// Appends text in quotes, with escapes for what JSON or a terminal would take for more than a
// character. False when bytes were not UTF-8, each of which becomes "?".
bool AppendJsonString(std::string_view text, std::string& json);

// The other direction, by the runtime's mapping: the encoded form of a message of the type,
// required fields present or not. Throws Error.
std::string ParseJson(std::string_view json, const Descriptor& type);

}  // namespace virtual_modem::inspect
