// What generate_tables.py makes of the descriptor set.
#pragma once

#include <google/protobuf/message_lite.h>
#include <virtual_modem/types.h>

#include <cstddef>
#include <cstdint>
#include <optional>

#include "text/tables.h"

namespace virtual_modem::text {

inline constexpr std::size_t kTypeCount = 122;

// A type has the same index in all of these.
extern const Tables kTables;
extern const Type kTypes[kTypeCount];
extern const std::uint8_t kTypesByName[kTypeCount];  // indexes, in the order of the names' bytes

// Requires a message of the type of that index.
std::optional<std::int32_t> SerialOf(std::size_t index,
                                     const google::protobuf::MessageLite& message);

}  // namespace virtual_modem::text
