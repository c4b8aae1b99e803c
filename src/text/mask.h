// Masks subscriber data in encoded messages, by the same rule as the printer.
#pragma once

#include <string>
#include <string_view>

#include "text/print.h"
#include "text/tables.h"
#include "text/walk.h"

namespace virtual_modem::text {

// Appends the encoded form of the message with X for each byte of a string of subscriber data and 0
// for a number of it. Of unknown fields tags and lengths stay, and as many bytes as there were: X,
// or 0 for a number; numbers that an enumeration does not declare stay. A walk of what is appended
// has the outcome that one of the bytes has. Where they break, what breaks is masked like an
// unknown field, X takes the place of each byte after it, and a masked number keeps its bytes, so
// that all offsets stay. show is kMasked or kShape.
Outcome AppendMasked(const Tables& tables, unsigned message, std::string_view bytes, Show show,
                     std::string& masked);

}  // namespace virtual_modem::text
