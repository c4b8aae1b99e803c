// Masks subscriber data in encoded messages, by the same rule as the printer.
#pragma once

#include <string>
#include <string_view>

#include "text/print.h"
#include "text/tables.h"
#include "text/walk.h"

namespace virtual_modem::text {

// Appends the encoded form of the message with X for each byte of a string of subscriber data and 0
// for a number of it, without unknown fields, and without what stands behind a place where the
// bytes break: what is appended can be parsed. show is kMasked or kShape.
Outcome AppendMasked(const Tables& tables, unsigned message, std::string_view bytes, Show show,
                     std::string& masked);

}  // namespace virtual_modem::text
