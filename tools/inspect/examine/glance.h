// What a message is picked by: its serial, its result, a field's value, and whether it is whole.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "inspect/schema/schema.h"
#include "text/walk.h"

namespace virtual_modem::inspect {

// FIELD=VALUE, or FIELD~VALUE for what contains the value. FIELD is a path below the message, such
// as calls.number for that of any call.
struct FieldCondition {
  std::vector<std::string> path;
  bool contains = false;
  std::string value;  // a number, true or false, the name of an enumeration's value, or a string
};

// Throws Error when no message of the schema has such a field.
FieldCondition ParseCondition(const Schema& schema, const std::string& condition);

struct Glance {
  std::optional<std::int32_t> serial;
  std::string error;  // name or number of the result, empty when there is none
  text::Outcome outcome;
  bool has_field = true;  // one of the message's fields meets the condition, if there is one
};

// One walk over the bytes. condition may be null.
Glance TakeGlance(const Schema& schema, const TypeInfo& type, std::string_view bytes,
                  const FieldCondition* condition);

}  // namespace virtual_modem::inspect
