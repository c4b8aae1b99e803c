#include "inspect/read/hex.h"

#include <google/protobuf/io/coded_stream.h>
#include <google/protobuf/io/zero_copy_stream_impl_lite.h>

#include <algorithm>
#include <array>
#include <cctype>
#include <charconv>
#include <cstddef>
#include <optional>

namespace virtual_modem::inspect {
namespace {

constexpr std::string_view kBlank = " \t\r";
constexpr std::string_view kHexDigits = "0123456789abcdefABCDEF";
constexpr const char* kLeftOut = "repeated lines were left out of the dump; hexdump -v keeps them";

// The last digit of an odd number is left out.
void AppendBytes(std::string_view digits, std::string& bytes) {
  for (std::size_t i = 0; i + 1 < digits.size(); i += 2) {
    bytes.push_back(static_cast<char>(HexDigit(digits[i]) * 16 + HexDigit(digits[i + 1])));
  }
}

// Appends the bytes of a line of hex without offsets, and counts the numbers of several bytes after
// a prefix. Returns the column of half a byte or, before that, of the first character that is not
// hex.
std::optional<std::size_t> ReadPlainLine(std::string_view line, std::string& bytes,
                                         std::size_t& words) {
  constexpr std::string_view kSeparators = " \t\r,:;-{}[]()\"'";
  line = line.substr(0, line.find("  >"));  // the characters of od -An -tx1z
  std::optional<std::size_t> odd;
  std::size_t i = 0;
  while (i < line.size()) {
    if (kSeparators.find(line[i]) != std::string_view::npos) {
      ++i;
      continue;
    }
    const bool prefixed = line.size() - i > 2 && (line[i] == '0' || line[i] == '\\') &&
                          (line[i + 1] == 'x' || line[i + 1] == 'X');
    const bool escaped = line[i] == '\\';
    if (prefixed) i += 2;
    std::size_t end = std::min(line.find_first_not_of(kHexDigits, i), line.size());
    // After another prefix without a separator begins another byte.
    if (end < line.size() && (line[end] == 'x' || line[end] == 'X') && end > i) --end;
    const std::size_t digits = end - i;
    if (digits == 0 || (escaped && digits > 2)) return i;
    if (prefixed && digits == 1) {
      bytes.push_back(static_cast<char>(HexDigit(line[i])));
    } else {
      if (digits % 2 != 0 && !odd) odd = end - 1;
      AppendBytes(line.substr(i, digits), bytes);
      if (prefixed && digits > 2) ++words;
    }
    i = end;
  }
  return odd;
}

HexResult ReadPlain(std::string_view text, std::string& bytes, std::string& why) {
  const bool blank = TrimLeft(text).empty();
  std::size_t words = 0;
  // What is not hex further on decides over what is odd before it.
  HexResult result = HexResult::kRead;
  for (std::size_t line = 1; !text.empty(); ++line) {
    const std::string_view content = TakeLine(text);
    const std::optional<std::size_t> column = ReadPlainLine(content, bytes, words);
    if (!column) continue;
    const bool odd = *column < content.size() && HexDigit(content[*column]) >= 0;
    if (odd && result == HexResult::kBroken) continue;
    why = "line " + std::to_string(line) + ", column " + std::to_string(*column + 1);
    if (odd) why += ": half a byte";
    if (content == "*") why += ": " + std::string(kLeftOut);
    if (!odd) return HexResult::kNotHex;
    result = HexResult::kBroken;
  }
  if (result == HexResult::kRead && words > 1) {
    why = "several bytes after each 0x, in an unknown order";
    return HexResult::kBroken;
  }
  // Nothing but separators is not hex; nothing at all is the empty message.
  if (result == HexResult::kRead && bytes.empty() && !blank) {
    why = "no digits";
    return HexResult::kNotHex;
  }
  return result;
}

// Dumps have lines that begin with their offset, as hexdump, xxd, od, debuggers and packet
// analyzers write them.
struct Offset {
  std::string_view digits;
  bool colon = false;
};

// Leaves in line what follows the offset.
bool TakeOffset(std::string_view& line, Offset& offset) {
  const bool prefixed = line.substr(0, 2) == "0x";
  if (prefixed) line.remove_prefix(2);
  const std::size_t digits = std::min(line.find_first_not_of(kHexDigits), line.size());
  if (digits < 4 || digits > 16) return false;
  offset.digits = line.substr(0, digits);
  line.remove_prefix(digits);
  offset.colon = !line.empty() && line.front() == ':';
  if (offset.colon) line.remove_prefix(1);
  if (!line.empty() && kBlank.find(line.front()) == std::string_view::npos) return false;
  line = TrimLeft(line);
  return offset.colon || !prefixed;
}

// A base that all offsets so far can be of.
struct Base {
  int radix;
  bool possible = true;
  std::uint64_t first = 0;
};
using Bases = std::array<Base, 3>;

// Offsets are of one base, and count from the first one. size bytes stand before this one.
bool Fits(std::string_view digits, std::size_t size, Bases& bases) {
  bool fits = false;
  for (Base& base : bases) {
    std::uint64_t value = 0;
    const char* end = digits.data() + digits.size();
    const auto result = std::from_chars(digits.data(), end, value, base.radix);
    if (size == 0) base.first = value;
    base.possible = base.possible && result.ec == std::errc() && result.ptr == end &&
                    value == base.first + size;
    fits = fits || base.possible;
  }
  return fits;
}

// Returns what is wrong with it, as the next one does.
std::string ReadGroup(std::string_view group, bool colon, std::string& bytes) {
  const bool prefixed = group.substr(0, 2) == "0x";
  if (prefixed) group.remove_prefix(2);
  const std::size_t size = group.size();
  if (group.find_first_not_of(kHexDigits) != std::string_view::npos || size % 2 != 0) {
    return "\"" + std::string(group) + "\" is not bytes in hex";
  }
  // Groups in the order of the bytes are those of xxd, which writes no other after a colon but
  // with -e.
  if (size != 2 && (!colon || prefixed || size == 8 || size == 16)) {
    return "numbers of " + std::to_string(size / 2) +
           " bytes, in an order that the dump does not show (xxd without -e and -g, "
           "hexdump -C and od -tx1 write bytes)";
  }
  AppendBytes(group, bytes);
  return "";
}

std::string ReadDumpLine(std::string_view line, Bases& bases, std::string& bytes) {
  Offset offset;
  if (line == "*") return kLeftOut;
  if (!TakeOffset(line, offset)) return "no offset, as the lines before it have";
  if (!Fits(offset.digits, bytes.size(), bases)) {
    return "the offset " + std::string(offset.digits) + " does not follow the " +
           std::to_string(bytes.size()) + " bytes before it";
  }
  // At the right stand the characters, set apart by two spaces after a colon, else by three.
  line = line.substr(0, std::min(line.find('|'), line.find("  >")));
  line = line.substr(0, line.find(offset.colon ? "  " : "   "));
  while (!line.empty()) {
    const std::size_t end = std::min(line.find_first_of(kBlank), line.size());
    std::string problem = ReadGroup(line.substr(0, end), offset.colon, bytes);
    if (!problem.empty()) return problem;
    line = TrimLeft(line.substr(end));
  }
  return "";
}

HexResult ReadDump(std::string_view text, std::string& bytes, std::string& why) {
  Bases bases{{{16}, {8}, {10}}};
  for (std::size_t number = 1; !text.empty(); ++number) {
    const std::string_view line = TrimLeft(TakeLine(text));
    if (line.empty()) continue;
    const std::string problem = ReadDumpLine(line, bases, bytes);
    if (problem.empty()) continue;
    why = "line " + std::to_string(number) + ": " + problem;
    return HexResult::kBroken;
  }
  return HexResult::kRead;
}

}  // namespace

HexResult ParseHex(std::string_view text, std::string& bytes, std::string& why) {
  bytes.clear();
  return IsDump(text) ? ReadDump(text, bytes, why) : ReadPlain(text, bytes, why);
}

// Offset 0 without a colon, or any with one, and digits after it, or anything where the offset is
// as long as no byte's digits are.
bool IsDump(std::string_view text) {
  std::string_view line;
  while (line.empty() && !text.empty()) line = TrimLeft(TakeLine(text));
  Offset offset;
  if (!TakeOffset(line, offset) || line.empty()) return false;
  if (HexDigit(line.front()) < 0 && offset.digits.size() < 6) return false;
  return offset.colon || offset.digits.find_first_not_of('0') == std::string_view::npos;
}

int HexDigit(char c) {
  if (IsDigit(c)) return c - '0';
  const char lower = static_cast<char>(c | 0x20);
  return lower >= 'a' && lower <= 'f' ? lower - 'a' + 10 : -1;
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

std::string Varint(std::uint64_t number) {
  std::string bytes;
  google::protobuf::io::StringOutputStream stream(&bytes);
  google::protobuf::io::CodedOutputStream(&stream).WriteVarint64(number);
  return bytes;
}

bool IsSpace(char c) { return std::isspace(static_cast<unsigned char>(c)) != 0; }

std::string_view TrimLeft(std::string_view text) {
  while (!text.empty() && IsSpace(text.front())) text.remove_prefix(1);
  return text;
}

std::string_view Trim(std::string_view text) {
  text = TrimLeft(text);
  while (!text.empty() && IsSpace(text.back())) text.remove_suffix(1);
  return text;
}

std::string_view TakeLine(std::string_view& text) {
  const std::size_t end = std::min(text.find('\n'), text.size());
  const std::string_view line = text.substr(0, end);
  text.remove_prefix(std::min(end + 1, text.size()));
  return line;
}

}  // namespace virtual_modem::inspect
