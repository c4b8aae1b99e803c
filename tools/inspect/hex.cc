#include "inspect/hex.h"

#include <algorithm>
#include <cctype>
#include <charconv>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

namespace virtual_modem::inspect {
namespace {

constexpr std::string_view kBlank = " \t\r";

std::vector<std::string_view> Lines(std::string_view text) {
  std::vector<std::string_view> lines;
  while (!text.empty()) {
    const std::size_t end = std::min(text.find('\n'), text.size());
    lines.push_back(text.substr(0, end));
    text.remove_prefix(std::min(end + 1, text.size()));
  }
  return lines;
}

// -1 for what is no hex digit.
int DigitValue(char c) {
  if (c >= '0' && c <= '9') return c - '0';
  if (c >= 'a' && c <= 'f') return c - 'a' + 10;
  if (c >= 'A' && c <= 'F') return c - 'A' + 10;
  return -1;
}

// Appends the bytes of one line; the column of the first character that is not hex, or nullopt.
std::optional<std::size_t> AppendLine(std::string_view line, std::string& bytes) {
  constexpr std::string_view kSeparators = " \t\r,:;-{}[]()\"'";
  std::size_t i = 0;
  while (i < line.size()) {
    if (kSeparators.find(line[i]) != std::string_view::npos) {
      ++i;
      continue;
    }
    const bool prefixed = line.size() - i > 2 && (line[i] == '0' || line[i] == '\\') &&
                          (line[i + 1] == 'x' || line[i + 1] == 'X');
    if (prefixed) i += 2;
    const int high = DigitValue(line[i]);
    if (high < 0) return i;
    const int low = i + 1 < line.size() ? DigitValue(line[i + 1]) : -1;
    if (low < 0 && !prefixed) return i;  // half a byte
    bytes.push_back(static_cast<char>(low < 0 ? high : high * 16 + low));
    i += low < 0 ? 1 : 2;
  }
  return std::nullopt;
}

// Reads lines that all begin with their offset, as hexdump, xxd, od and packet analysers write
// them: hex or octal, at least four digits, perhaps with a colon. Offsets may begin anywhere if a
// colon tells them from bytes. The column of characters at the right, which "|", two spaces (after
// a colon) or three set apart, is left out.
bool ParseDump(const std::vector<std::string_view>& lines, std::string& bytes) {
  std::optional<std::uint64_t> base;
  for (std::string_view line : lines) {
    line.remove_prefix(std::min(line.find_first_not_of(kBlank), line.size()));
    if (line.empty()) continue;

    const std::size_t digits =
        std::min(line.find_first_not_of("0123456789abcdefABCDEF"), line.size());
    if (digits < 4 || digits > 16) return false;
    const bool colon =
        digits < line.size() && line[digits] == ':' &&
        (digits + 1 == line.size() || kBlank.find(line[digits + 1]) != std::string_view::npos);
    const auto offset_is = [&](int radix) {
      std::uint64_t offset = 0;
      const auto [end, error] = std::from_chars(line.data(), line.data() + digits, offset, radix);
      if (error != std::errc() || end != line.data() + digits) return false;
      if (!base) base = offset;
      return offset == *base + bytes.size() && (colon || *base == 0);
    };
    if (!offset_is(16) && !offset_is(8)) return false;

    line.remove_prefix(digits + (colon ? 1 : 0));
    line.remove_prefix(std::min(line.find_first_not_of(kBlank), line.size()));
    line = line.substr(0, line.find('|'));
    line = line.substr(0, line.find(colon ? "  " : "   "));
    if (AppendLine(line, bytes)) return false;
  }
  return !bytes.empty();
}

}  // namespace

bool ParseHex(std::string_view text, std::string& bytes, std::string& why) {
  const std::vector<std::string_view> lines = Lines(text);
  bytes.clear();
  if (ParseDump(lines, bytes)) return true;
  bytes.clear();
  for (std::size_t i = 0; i < lines.size(); ++i) {
    const std::optional<std::size_t> column = AppendLine(lines[i], bytes);
    if (!column) continue;
    why = "line " + std::to_string(i + 1) + ", column " + std::to_string(*column + 1);
    if (lines[i] == "*") why += ": repeated lines were left out of the dump; hexdump -v keeps them";
    return false;
  }
  // Nothing but separators is not hex; nothing at all is the empty message.
  why = "no digits";
  return !bytes.empty() || text.find_first_not_of(" \t\r\n") == std::string_view::npos;
}

std::string ToHex(std::string_view bytes) {
  constexpr std::string_view kDigits = "0123456789abcdef";
  std::string text;
  text.reserve(bytes.size() * 2);
  for (const char c : bytes) {
    const auto byte = static_cast<std::uint8_t>(c);
    text.push_back(kDigits[byte >> 4U]);
    text.push_back(kDigits[byte & 0xFU]);
  }
  return text;
}

}  // namespace virtual_modem::inspect
