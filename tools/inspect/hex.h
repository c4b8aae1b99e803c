// Hex as people paste it: plain, with separators, with 0x or \x, or a dump with offsets.
#pragma once

#include <string>
#include <string_view>

namespace virtual_modem::inspect {

// On failure why names the place, such as "line 2, column 7: 'g'".
bool ParseHex(std::string_view text, std::string& bytes, std::string& why);

// Lower case, without separators.
std::string ToHex(std::string_view bytes);

}  // namespace virtual_modem::inspect
