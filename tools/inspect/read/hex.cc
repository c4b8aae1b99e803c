#include "inspect/read/hex.h"

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

std::string Place(std::size_t line, std::size_t column) {
  return "line " + std::to_string(line) + ", column " + std::to_string(column + 1);
}

// Hex without offsets.
class PlainHex {
 public:
  explicit PlainHex(std::string& bytes) : bytes_(bytes) { bytes_.clear(); }

  HexResult Read(std::string_view text, std::string& why) {
    const bool blank = TrimLeft(text).find_first_not_of("\n \t\r") == std::string_view::npos;
    // What is not hex further on decides over what is odd before it.
    HexResult result = HexResult::kRead;
    for (std::size_t line = 1; !text.empty(); ++line) {
      const std::string_view content = TakeLine(text);
      const std::optional<std::size_t> column = ReadLine(content);
      if (!column) continue;
      const bool odd = *column < content.size() && HexDigit(content[*column]) >= 0;
      if (odd && result == HexResult::kBroken) continue;
      why = Place(line, *column) + (odd ? ": half a byte" : "");
      if (content == "*") {
        why += ": repeated lines were left out of the dump; hexdump -v keeps them";
      }
      if (!odd) return HexResult::kNotHex;
      result = HexResult::kBroken;
    }
    if (result == HexResult::kRead && words_ > 1) {
      why = "several bytes after each 0x, in an order that the text does not tell";
      return HexResult::kBroken;
    }
    // Nothing but separators is not hex; nothing at all is the empty message.
    if (result == HexResult::kRead && bytes_.empty() && !blank) {
      why = "no digits";
      return HexResult::kNotHex;
    }
    return result;
  }

 private:
  // The column of half a byte or, before that, of the first character that is not hex.
  std::optional<std::size_t> ReadLine(std::string_view line) {
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
        bytes_.push_back(static_cast<char>(HexDigit(line[i])));
      } else {
        if (digits % 2 != 0 && !odd) odd = end - 1;
        for (std::size_t at = i; at + 1 < end; at += 2) {
          bytes_.push_back(static_cast<char>(HexDigit(line[at]) * 16 + HexDigit(line[at + 1])));
        }
        if (prefixed && digits > 2) ++words_;
      }
      i = end;
    }
    return odd;
  }

  std::string& bytes_;
  std::size_t words_ = 0;  // prefixed numbers of more than a byte
};

// Dumps whose lines begin with their offset, as hexdump, xxd, od, debuggers and packet analyzers
// write them. Programs that write no colon after the offset write numbers in the order of the
// machine that dumped, when they are of more than one byte.
class Dump {
 public:
  explicit Dump(std::string& bytes) : bytes_(bytes) { bytes_.clear(); }

  // Offset 0 without a colon, or any with one, and digits after it, or anything where the offset
  // is as long as no byte's digits are.
  static bool Begins(std::string_view text) {
    std::string_view line;
    while (line.empty() && !text.empty()) line = TrimLeft(TakeLine(text));
    Offset offset;
    if (!TakeOffset(line, offset) || line.empty()) return false;
    if (HexDigit(line.front()) < 0 && offset.digits.size() < 6) return false;
    return offset.colon || offset.digits.find_first_not_of('0') == std::string_view::npos;
  }

  HexResult Read(std::string_view text, std::string& why, std::string& note) {
    for (std::size_t number = 1; !text.empty(); ++number) {
      const std::string_view line = TrimLeft(TakeLine(text));
      if (!line.empty() && !ReadLine(line)) {
        why = "line " + std::to_string(number) + ": " + problem_;
        return HexResult::kBroken;
      }
    }
    if (unit_ > 1) {
      note = "taken for numbers of " + std::to_string(unit_) +
             " bytes, the lowest byte first (hexdump -C and od -tx1 write bytes)";
    }
    return HexResult::kRead;
  }

 private:
  struct Offset {
    std::string_view digits;
    bool colon = false;
  };

  // Leaves in line what follows the offset.
  static bool TakeOffset(std::string_view& line, Offset& offset) {
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

  bool Refuse(std::string why) {
    problem_ = std::move(why);
    return false;
  }

  bool ReadLine(std::string_view line) {
    Offset offset;
    if (line == "*") {
      return Refuse("repeated lines were left out of the dump; hexdump -v keeps them");
    }
    if (!TakeOffset(line, offset)) return Refuse("no offset, as the lines before it have");
    line = WithoutCharacters(line, offset.colon);
    if (!OffsetFits(offset, line.empty())) {
      return Refuse("the offset " + std::string(offset.digits) + " does not follow the " +
                    std::to_string(bytes_.size()) + " bytes before it");
    }
    while (!line.empty()) {
      const std::size_t end = std::min(line.find_first_of(kBlank), line.size());
      if (!ReadNumber(line.substr(0, end), offset.colon)) return false;
      line = TrimLeft(line.substr(end));
    }
    return true;
  }

  // Cuts the column at the right that shows the bytes as characters: after "|" or "  >", or set
  // apart by two spaces (after a colon) or three.
  std::string_view WithoutCharacters(std::string_view line, bool colon) const {
    line = line.substr(0, std::min(line.find('|'), line.find("  >")));
    const bool words = unit_ > 1 || (!colon && line.find_first_of(kBlank) > 2);
    return words ? line : line.substr(0, line.find(colon ? "  " : "   "));
  }

  // Offsets are hex, octal or decimal, the same in all lines, and count from the first one. The
  // last line of a dump, which has no bytes, tells how many of the last number were there.
  bool OffsetFits(const Offset& offset, bool last) {
    constexpr std::array<int, 3> kRadixes{16, 8, 10};
    bool fits = false;
    std::size_t surplus = 0;
    for (std::size_t i = 0; i < kRadixes.size(); ++i) {
      if (!possible_.at(i)) continue;
      std::uint64_t value = 0;
      const char* end = offset.digits.data() + offset.digits.size();
      const auto result = std::from_chars(offset.digits.data(), end, value, kRadixes.at(i));
      possible_.at(i) = result.ec == std::errc() && result.ptr == end;
      if (!possible_.at(i)) continue;
      if (first_) base_.at(i) = value;
      const std::uint64_t expected = base_.at(i) + bytes_.size();
      const bool padded = last && value < expected && expected - value < unit_;
      possible_.at(i) = value == expected || padded;
      if (possible_.at(i)) surplus = static_cast<std::size_t>(expected - value);
      fits = fits || possible_.at(i);
    }
    first_ = false;
    bytes_.resize(bytes_.size() - (fits ? surplus : 0));
    return fits;
  }

  bool ReadNumber(std::string_view number, bool colon) {
    const bool prefixed = number.substr(0, 2) == "0x";
    if (prefixed) number.remove_prefix(2);
    const bool odd = number.size() == 3 || number.size() == 6;  // octal of one or two bytes
    const bool octal = !colon && odd;
    const int radix = octal ? 8 : 16;
    const std::size_t unit =
        octal ? number.size() / 3 : (colon && !prefixed ? 1 : number.size() / 2);
    std::uint64_t value = 0;
    const char* end = number.data() + number.size();
    if (number.find_first_not_of(kHexDigits) != std::string_view::npos ||
        (!octal && number.size() % 2 != 0)) {
      return Refuse("\"" + std::string(number) + "\" is neither bytes in hex nor in octal");
    }
    if (colon && (prefixed ? unit > 1 : number.size() == 8 || number.size() == 16)) {
      return Refuse("numbers of " + std::to_string(number.size() / 2) +
                    " bytes, in an order that the dump does not tell (xxd without -e and -g, "
                    "hexdump -C and od -tx1 write bytes)");
    }
    if (unit_ == 0) unit_ = unit;
    if (unit != unit_ || unit > 8) return Refuse("numbers of different sizes");
    if (colon && !prefixed) {
      for (std::size_t i = 0; i < number.size(); i += 2) {
        bytes_.push_back(static_cast<char>(HexDigit(number[i]) * 16 + HexDigit(number[i + 1])));
      }
      return true;
    }
    const auto result = std::from_chars(number.data(), end, value, radix);
    if (result.ec != std::errc() || result.ptr != end || (unit < 8 && value >> (8 * unit) != 0)) {
      return Refuse("\"" + std::string(number) + "\" is no number of " + std::to_string(unit) +
                    " bytes");
    }
    for (std::size_t i = 0; i < unit; ++i) bytes_.push_back(static_cast<char>(value >> (8 * i)));
    return true;
  }

  std::string& bytes_;
  std::string problem_;
  std::size_t unit_ = 0;  // bytes of each number; 0: none was read yet
  bool first_ = true;
  std::array<std::uint64_t, 3> base_{};
  std::array<bool, 3> possible_{true, true, true};
};

}  // namespace

HexResult ParseHex(std::string_view text, std::string& bytes, std::string& why, std::string& note) {
  if (Dump::Begins(text)) return Dump(bytes).Read(text, why, note);
  return PlainHex(bytes).Read(text, why);
}

bool IsDump(std::string_view text) { return Dump::Begins(text); }

int HexDigit(char c) {
  if (c >= '0' && c <= '9') return c - '0';
  if (c >= 'a' && c <= 'f') return c - 'a' + 10;
  if (c >= 'A' && c <= 'F') return c - 'A' + 10;
  return -1;
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
