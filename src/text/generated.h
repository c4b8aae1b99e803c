// What generate_tables.py generates from the schema.
#pragma once

#include <google/protobuf/message_lite.h>
#include <virtual_modem/types.h>

#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <optional>
#include <type_traits>

#include "text/tables.h"

namespace virtual_modem::text {

#define VIRTUAL_MODEM_NAME(name, cpp_class, unit) name,
inline constexpr std::size_t kTypeCount =
    std::initializer_list<const char*>{VIRTUAL_MODEM_MESSAGES(VIRTUAL_MODEM_NAME)}.size();
#undef VIRTUAL_MODEM_NAME
using TypeIndex = std::conditional_t<(kTypeCount > 256), std::uint16_t, std::uint8_t>;

// A type has the same index in all of these.
extern const Tables kTables;
extern const Type kTypes[kTypeCount];
extern const TypeIndex kTypesByName[kTypeCount];  // indexes, in the order of the names' bytes

// Requires a message of the type of that index.
std::optional<std::int32_t> SerialOf(std::size_t index,
                                     const google::protobuf::MessageLite& message);

}  // namespace virtual_modem::text
