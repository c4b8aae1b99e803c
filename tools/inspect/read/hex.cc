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

// The last digit of an odd number is left out.
void AppendBytes(std::string_view digits, std::string& bytes) {
  for (std::size_t i = 0; i + 1 < digits.size(); i += 2) {
    bytes.push_back(static_cast<char>(HexDigit(digits[i]) * 16 + HexDigit(digits[i + 1])));
  }
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
      why = "line " + std::to_string(line) + ", column " + std::to_string(*column + 1);
      if (odd) why += ": half a byte";
      if (content == "*") {
        why += ": repeated lines were left out of the dump; hexdump -v keeps them";
      }
      if (!odd) return HexResult::kNotHex;
      result = HexResult::kBroken;
    }
    if (result == HexResult::kRead && words_ > 1) {
      why = "several bytes after each 0x, in an unknown order";
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
        AppendBytes(line.substr(i, digits), bytes_);
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
// write them.
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

  HexResult Read(std::string_view text, std::string& why) {
    for (std::size_t number = 1; !text.empty(); ++number) {
      const std::string_view line = TrimLeft(TakeLine(text));
      if (line.empty()) continue;
      const std::string problem = ReadLine(line);
      if (problem.empty()) continue;
      why = "line " + std::to_string(number) + ": " + problem;
      return HexResult::kBroken;
    }
    return HexResult::kRead;
  }

 private:
  struct Offset {
    std::string_view digits;
    bool colon = false;
  };
  // A base that all offsets so far can be of.
  struct Base {
    int radix;
    bool possible = true;
    std::uint64_t first = 0;
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

  // Returns what is wrong with it.
  std::string ReadLine(std::string_view line) {
    Offset offset;
    if (line == "*") return "repeated lines were left out of the dump; hexdump -v keeps them";
    if (!TakeOffset(line, offset)) return "no offset, as the lines before it have";
    if (!Fits(offset.digits)) {
      return "the offset " + std::string(offset.digits) + " does not follow the " +
             std::to_string(bytes_.size()) + " bytes before it";
    }
    // At the right stand the characters, set apart by two spaces after a colon, else by three.
    line = line.substr(0, std::min(line.find('|'), line.find("  >")));
    line = line.substr(0, line.find(offset.colon ? "  " : "   "));
    while (!line.empty()) {
      const std::size_t end = std::min(line.find_first_of(kBlank), line.size());
      std::string problem = ReadGroup(line.substr(0, end), offset.colon);
      if (!problem.empty()) return problem;
      line = TrimLeft(line.substr(end));
    }
    return "";
  }

  // Offsets are of one base, and count from the first one.
  bool Fits(std::string_view digits) {
    bool fits = false;
    for (Base& base : bases_) {
      std::uint64_t value = 0;
      const char* end = digits.data() + digits.size();
      const auto result = std::from_chars(digits.data(), end, value, base.radix);
      if (bytes_.empty()) base.first = value;
      base.possible = base.possible && result.ec == std::errc() && result.ptr == end &&
                      value == base.first + bytes_.size();
      fits = fits || base.possible;
    }
    return fits;
  }

  std::string ReadGroup(std::string_view group, bool colon) {
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
    AppendBytes(group, bytes_);
    return "";
  }

  std::string& bytes_;
  std::array<Base, 3> bases_{{{16}, {8}, {10}}};
};

}  // namespace

HexResult ParseHex(std::string_view text, std::string& bytes, std::string& why) {
  if (Dump::Begins(text)) return Dump(bytes).Read(text, why);
  return PlainHex(bytes).Read(text, why);
}

bool IsDump(std::string_view text) { return Dump::Begins(text); }

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
