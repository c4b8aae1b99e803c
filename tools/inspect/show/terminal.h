// Makes text from outside safe for a terminal.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace virtual_modem::inspect {

// Whether the character acts upon a terminal or upon the order of what it shows, instead of being
// shown: control characters (C0 and C1), bidirectional and invisible ones, separators of lines.
bool ActsOnTerminal(std::uint32_t code_point);

// One character of UTF-8 from the beginning of the text: its code point and its size, which is 0
// when the bytes are not UTF-8.
std::uint32_t TakeUtf8(std::string_view text, std::size_t& size);

// One line in which every byte of such a character, or that is not UTF-8, is written as \xhh.
std::string ForTerminal(std::string_view text);

}  // namespace virtual_modem::inspect
