// Masks subscriber data, so that a log can be shared.
#pragma once

#include <google/protobuf/message.h>

#include "inspect/schema.h"

namespace virtual_modem::inspect {

// Replaces every character of a field of subscriber data by X and every number by 0; lengths and
// counts stay. Unknown fields, whose meaning nobody knows, are dropped.
void Redact(const Schema& schema, Message& message);

}  // namespace virtual_modem::inspect
