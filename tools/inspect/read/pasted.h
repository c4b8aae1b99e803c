// Bytes as people paste them: hex, base64, string literals, lists of numbers, lines of a log.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace virtual_modem::inspect {

enum class Encoding : std::uint8_t { kAuto, kBinary, kHex, kBase64, kString, kArray, kLog };

// The bytes that a text stands for. With kAuto the form is found out: a text that is hex, or would
// be but for half a byte, is never taken for anything else, and what cannot be told from another
// form is refused. note is set, else left alone, when something was left out or had to be assumed.
// Throws Error.
std::string ParsePasted(std::string_view text, Encoding encoding, std::string& note);

struct HexRun {
  std::size_t begin = 0;  // its place in the line
  std::size_t end = 0;
  std::string bytes;
};

// The longest run of hex in a line of a log, of at least four bytes: digits in a row, or groups of
// one size set apart by one character each. Throws Error when the longest run is half a byte short,
// or there are two.
std::optional<HexRun> FindHexRun(std::string_view line);

}  // namespace virtual_modem::inspect
