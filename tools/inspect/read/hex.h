// Hex as people paste it: plain, with separators, with 0x or \x, or a dump with offsets.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace virtual_modem::inspect {

enum class HexResult : std::uint8_t {
  kRead,
  kNotHex,  // the text is something else
  kBroken,  // hex whose bytes are not clear
};

// Unless kRead, why names the place and what is there.
HexResult ParseHex(std::string_view text, std::string& bytes, std::string& why);

// Whether the text is a dump with offsets, which is hex then and nothing else.
bool IsDump(std::string_view text);

// -1 for any other character than a hex digit.
int HexDigit(char c);

// Lower case, without separators.
std::string ToHex(std::string_view bytes);

// A number as it stands on the wire.
std::string Varint(std::uint64_t number);

inline bool IsDigit(char c) { return c >= '0' && c <= '9'; }
// Letters, digits and underscores.
inline bool IsWord(char c) {
  return IsDigit(c) || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_';
}
bool IsSpace(char c);
std::string_view TrimLeft(std::string_view text);
std::string_view Trim(std::string_view text);

// The next line of the text, without its end; text becomes what follows.
std::string_view TakeLine(std::string_view& text);

}  // namespace virtual_modem::inspect
