#include "inspect/read/pasted.h"

#include <google/protobuf/stubs/common.h>
#include <google/protobuf/stubs/strutil.h>

#include <algorithm>
#include <charconv>
#include <optional>

#include "inspect/error.h"
#include "inspect/read/hex.h"
#include "inspect/read/text_form.h"

namespace virtual_modem::inspect {
namespace {

constexpr std::size_t kShortestRun = 4;  // bytes: clock times and process numbers are shorter

constexpr std::size_t kShortestRow = 6;  // the same for a row of groups of several bytes

bool IsText(std::string_view bytes) {
  const auto is_control = [](char c) {
    return (c >= 0 && c < ' ' && c != '\t' && c != '\n' && c != '\r') || c == '\x7F';
  };
  return std::none_of(bytes.begin(), bytes.end(), is_control) &&
         google::protobuf::internal::IsStructurallyValidUTF8(bytes.data(),
                                                             static_cast<int>(bytes.size()));
}

std::string Took(const std::string& what, std::size_t bytes, std::size_t at) {
  return "took the " + what + " of " + std::to_string(bytes) + " bytes at column " +
         std::to_string(at + 1) + " and ignored the rest";
}

// ---- Base64 -------------------------------------------------------------------------------------

// Either alphabet.
bool ParseBase64(std::string_view text, std::string& bytes) {
  const google::protobuf::StringPiece piece(text.data(), text.size());
  return google::protobuf::Base64Unescape(piece, &bytes) ||
         google::protobuf::WebSafeBase64Unescape(piece, &bytes);
}

// Words with spaces between them are not base64, although its decoders skip the spaces.
bool IsInOnePiece(std::string_view text) {
  while (!text.empty()) {
    const std::string_view line = Trim(TakeLine(text));
    if (std::any_of(line.begin(), line.end(), IsSpace)) return false;
  }
  return true;
}

// ---- String literals ----------------------------------------------------------------------------

// One character of a literal, or its escape, as C, Python, Java and strace write them. False for an
// escape that stands for no byte.
bool TakeCharacter(std::string_view& text, std::string& bytes) {
  constexpr std::string_view kLetters = "abefnrtv\\'\"?";
  constexpr std::string_view kMeanings = "\a\b\x1B\f\n\r\t\v\\'\"?";
  if (text.front() != '\\') {
    bytes.push_back(text.front());
    text.remove_prefix(1);
    return true;
  }
  text.remove_prefix(1);
  const bool hex = !text.empty() && text.front() == 'x';
  if (hex) text.remove_prefix(1);
  const char* last = text.data() + std::min<std::size_t>(text.size(), hex ? 2 : 3);
  unsigned value = 0;
  const auto result = std::from_chars(text.data(), last, value, hex ? 16 : 8);
  if (result.ec == std::errc() && value <= 0xFF) {
    bytes.push_back(static_cast<char>(value));
    text.remove_prefix(static_cast<std::size_t>(result.ptr - text.data()));
    return true;
  }
  const std::size_t letter =
      hex || text.empty() ? std::string_view::npos : kLetters.find(text.front());
  if (letter == std::string_view::npos) return false;
  bytes.push_back(kMeanings[letter]);
  text.remove_prefix(1);
  return true;
}

// A string in quotes.
struct Literal {
  std::size_t begin = 0;
  std::size_t end = 0;  // after its closing quote
  std::string bytes;
  bool broken = false;  // has an invalid escape
};

// The longest string, whose end is 0 when there is none. Looks at each byte three times at most:
// what no quote closes once is not closed from anywhere after it either.
Literal FindLongest(std::string_view text) {
  Literal longest;
  bool open_quote = false;
  bool open_apostrophe = false;
  for (std::size_t at = 0; at < text.size(); ++at) {
    const char quote = text[at];
    if (quote != '"' && quote != '\'') continue;
    const bool marked = at > 0 && (text[at - 1] == 'b' || text[at - 1] == 'B');
    const bool apostrophe = at > (marked ? 1 : 0) && IsWord(text[at - (marked ? 2 : 1)]);
    bool& open = quote == '"' ? open_quote : open_apostrophe;
    if (apostrophe || open) continue;
    Literal literal{at - (marked ? 1 : 0), 0, "", false};
    std::string_view rest = text.substr(at + 1);
    while (!rest.empty() && rest.front() != quote) {
      if (TakeCharacter(rest, literal.bytes)) continue;
      literal.broken = true;
      if (!rest.empty()) rest.remove_prefix(1);
    }
    open = rest.empty();
    if (open) continue;
    at = text.size() - rest.size();
    literal.end = at + 1;
    if (longest.end == 0 || literal.bytes.size() > longest.bytes.size()) longest = literal;
  }
  return longest;
}

// The longest literal is meant.
std::string ParseString(std::string_view text, std::string& note) {
  const Literal longest = FindLongest(text);
  if (longest.end == 0) throw Error("no string in quotes");
  if (longest.broken) {
    throw Error(R"(a string with an escape that stands for no byte; \ooo and \xhh do)");
  }
  if (text.substr(longest.end, 3) == "...") {
    throw Error("the string was cut where \"...\" stands (strace -s 65536 shows it whole)");
  }
  const std::string_view after = Trim(text.substr(longest.end));
  const bool alone = Trim(text.substr(0, longest.begin)).empty() &&
                     (after.empty() || after == ";" || after == ",");
  if (!alone) note = Took("string", longest.bytes.size(), longest.begin);
  return longest.bytes;
}

// ---- Lists of numbers ---------------------------------------------------------------------------

// Numbers of bytes, signed or not, in decimal or after 0x: nullopt when the list is something
// else, such as plain hex. clear tells whether it can be nothing but such numbers.
std::optional<std::string> ReadNumbers(std::string_view list, bool& clear) {
  std::string bytes;
  std::size_t at = 0;
  clear = false;
  while ((at = list.find_first_not_of(", \t\r\n", at)) != std::string_view::npos) {
    const std::size_t end = std::min(list.find_first_of(", \t\r\n", at), list.size());
    const std::string_view number = list.substr(at, end - at);
    const bool hex = number.substr(0, 2) == "0x" || number.substr(0, 2) == "0X";
    const std::string_view digits = number.substr(hex ? 2 : (number.front() == '-' ? 1 : 0));
    int value = 0;
    const char* begin = hex ? digits.data() : number.data();
    const auto result = std::from_chars(begin, number.data() + number.size(), value, hex ? 16 : 10);
    if (result.ec != std::errc() || result.ptr != number.data() + number.size() ||
        (!hex && digits.size() > 1 && digits.front() == '0') || digits.size() > 3) {
      return std::nullopt;
    }
    if (value < -128 || value > 255) {
      throw Error("a list of numbers in which " + std::string(number) + " is not a byte");
    }
    clear = clear || number.size() != 2;
    bytes.push_back(static_cast<char>(value));
    at = end;
  }
  return bytes;
}

// The first list in brackets or braces whose elements are numbers of bytes; one that stands within
// other text has at least three. No bracket stands within such a list.
std::optional<std::string> ParseArray(std::string_view text, bool& clear, std::string& note) {
  std::string_view all = Trim(text);
  if (!all.empty() && all.back() == ';') all = Trim(all.substr(0, all.size() - 1));
  std::size_t open = text.find_first_of("[{");
  while (open != std::string_view::npos) {
    const std::size_t close = text.find_first_of("[]{}", open + 1);
    if (close == std::string_view::npos) break;
    if (text[close] == (text[open] == '[' ? ']' : '}')) {
      const std::string_view list = text.substr(open + 1, close - open - 1);
      std::optional<std::string> bytes = ReadNumbers(list, clear);
      const bool alone = all.size() == list.size() + 2 && all.data() == text.data() + open;
      if (bytes && !bytes->empty() && (alone || bytes->size() >= 3)) {
        if (!alone) note = Took("list", bytes->size(), open);
        return bytes;
      }
    }
    open = text.find_first_of("[{", close);
  }
  return std::nullopt;
}

// ---- Lines of a log -----------------------------------------------------------------------------

// A run of hex in one line.
struct Run {
  std::size_t begin = 0;
  std::size_t end = 0;
  std::size_t digits = 0;
};

// Hex digits from at on, with or without 0x before them, that no other word touches; end is 0 when
// there are none.
Run TakeGroup(std::string_view line, std::size_t at) {
  Run group;
  group.begin = at;
  if (line.substr(at, 2) == "0x" || line.substr(at, 2) == "0X") at += 2;
  std::size_t end = at;
  while (end < line.size() && HexDigit(line[end]) >= 0) ++end;
  if (end == at || (end < line.size() && IsWord(line[end]))) return group;
  group.end = end;
  group.digits = end - at;
  return group;
}

// The run that begins at a place: groups of one size, but for a shorter last one, that one and the
// same separator sets apart.
Run TakeRun(std::string_view line, std::size_t at) {
  Run run = TakeGroup(line, at);
  if (run.end == 0 || run.digits % 2 != 0) return run;
  const Run first = run;
  const std::size_t group_digits = run.digits;
  std::size_t last_digits = group_digits;
  char separator = '\0';
  while (run.end + 1 < line.size() && last_digits == group_digits) {
    const char c = line[run.end];
    if (std::string_view(" :,-").find(c) == std::string_view::npos) break;
    if (separator != '\0' && c != separator) break;
    const bool spaced = c == ',' && line[run.end + 1] == ' ';
    const Run group = TakeGroup(line, run.end + (spaced ? 2 : 1));
    // What another separator follows may be a part of something else, such as a date.
    const char after = group.end < line.size() ? line[group.end] : c;
    if (group.end == 0 || group.digits % 2 != 0 || group.digits > group_digits) break;
    if (after != c && (after == ':' || after == '-')) break;
    separator = c;
    run.end = group.end;
    run.digits += group.digits;
    last_digits = group.digits;
  }
  // A few wider groups may be any numbers.
  const bool bytes = group_digits == 2 || run.digits >= 2 * kShortestRow;
  return bytes ? run : first;
}

// The first line with a run of hex; other lines must have none.
std::optional<std::string> ParseLog(std::string_view text, std::string& note) {
  std::optional<std::string> found;
  std::size_t found_at = 0;
  for (std::size_t number = 1; !text.empty(); ++number) {
    const std::optional<HexRun> run = FindHexRun(TakeLine(text));
    if (!run) continue;
    if (found) {
      throw Error("lines " + std::to_string(found_at) + " and " + std::to_string(number) +
                  " both have hex; give the bytes of one message (--hex), or read all lines with "
                  "the command log");
    }
    found = run->bytes;
    found_at = number;
    note = "took the " + std::to_string(run->bytes.size()) + " bytes of hex at line " +
           std::to_string(number) + ", columns " + std::to_string(run->begin + 1) + " to " +
           std::to_string(run->end) + ", and ignored the rest";
  }
  return found;
}

// A JSON object: an array of strings in C has no colon after the first one.
bool IsJson(std::string_view text) {
  text = Trim(text);
  if (text.empty() || text.front() != '{') return false;
  text = TrimLeft(text.substr(1));
  if (text.empty() || text.front() != '"') return false;
  text = TrimLeft(text.substr(std::min(text.find('"', 1), text.size() - 1) + 1));
  return !text.empty() && text.front() == ':';
}

[[noreturn]] void RefuseMessageText(const std::string& form, const std::string& command) {
  throw Error("a message in " + form + "; the command " + command + " turns it into bytes");
}

std::string ParseAny(std::string_view text, std::string& note) {
  if (!IsText(text)) return std::string(text);
  std::string bytes;
  std::string why_not_hex;
  const HexResult hex = ParseHex(text, bytes, why_not_hex);
  const auto refuse_broken = [&] {
    if (hex == HexResult::kBroken) throw Error("hex whose bytes are unclear: " + why_not_hex);
  };
  if (IsDump(text)) {
    refuse_broken();
    return bytes;
  }
  const TextForm form = hex == HexResult::kNotHex ? TakeTextForm(text) : TextForm();
  if (form.whole && form.fields > 1) RefuseMessageText("the text format", "encode");
  if (hex == HexResult::kNotHex && IsJson(text)) RefuseMessageText("JSON", "encode --json");
  const bool has_escapes = text.find('\\') != std::string_view::npos;
  const bool quoted = text.find_first_of("\"'") != std::string_view::npos;
  // What stands between escapes is characters.
  if (has_escapes && quoted) return ParseString(text, note);
  bool clear = false;
  if (const std::optional<std::string> array = ParseArray(text, clear, note)) {
    if (clear || hex == HexResult::kNotHex) return *array;
    throw Error("a list whose numbers can be decimal or hex: say --from array or --from hex");
  }
  refuse_broken();
  if (hex == HexResult::kRead) return bytes;
  std::string_view word = Trim(text);
  if (word.size() > 2 && word.front() == word.back() && (word[0] == '"' || word[0] == '\'')) {
    word = word.substr(1, word.size() - 2);
  }
  if (IsInOnePiece(word) && ParseBase64(word, bytes)) return bytes;
  if (const std::optional<std::string> run = ParseLog(text, note)) return *run;
  if (form.whole && form.fields > 0) RefuseMessageText("the text format", "encode");
  throw Error("text that is neither hex (" + why_not_hex +
              ") nor base64, a string with escapes, a list of numbers or a line with " +
              std::to_string(kShortestRun) +
              " bytes of hex; if it is the message itself, say --from binary");
}

}  // namespace

std::optional<HexRun> FindHexRun(std::string_view line) {
  Run longest;
  bool tie = false;
  for (std::size_t at = 0; at < line.size();) {
    const bool inside = at > 0 && (IsWord(line[at - 1]) || line[at - 1] == '.');
    const bool joined = at > 1 &&
                        std::string_view(":-").find(line[at - 1]) != std::string_view::npos &&
                        HexDigit(line[at - 2]) >= 0;
    const Run run = inside || joined || HexDigit(line[at]) < 0 ? Run() : TakeRun(line, at);
    if (run.end == 0) {
      ++at;
      continue;
    }
    if (run.digits > longest.digits) {
      longest = run;
      tie = false;
    } else if (run.digits == longest.digits) {
      tie = true;
    }
    at = run.end;
  }
  if (longest.digits < 2 * kShortestRun) return std::nullopt;
  if (longest.digits % 2 != 0) {
    throw Error("the longest run of hex, at column " + std::to_string(longest.begin + 1) +
                ", has " + std::to_string(longest.digits) + " digits: half a byte is missing");
  }
  if (tie) {
    throw Error("two runs of hex of " + std::to_string(longest.digits / 2) +
                " bytes in one line; give the one that is meant (--hex)");
  }
  HexRun run{longest.begin, longest.end, ""};
  std::string why;
  const std::string_view digits = line.substr(run.begin, run.end - run.begin);
  if (ParseHex(digits, run.bytes, why) != HexResult::kRead) return std::nullopt;
  return run;
}

std::string ParsePasted(std::string_view text, Encoding encoding, std::string& note) {
  std::string bytes;
  std::string why;
  switch (encoding) {
    case Encoding::kAuto:
      return ParseAny(text, note);
    case Encoding::kBinary:
      return std::string(text);
    case Encoding::kHex:
      if (ParseHex(text, bytes, why) == HexResult::kRead) return bytes;
      throw Error("not hex: " + why);
    case Encoding::kBase64:
      if (ParseBase64(text, bytes)) return bytes;
      throw Error("not base64");
    case Encoding::kString:
      return ParseString(text, note);
    case Encoding::kArray: {
      bool clear = false;
      if (const auto array = ParseArray(text, clear, note)) return *array;
      throw Error("not a list of bytes, as numbers in brackets or braces");
    }
    case Encoding::kLog:
      if (const auto run = ParseLog(text, note)) return *run;
      throw Error("no line has " + std::to_string(kShortestRun) + " bytes of hex");
  }
  throw Error("unknown form");
}

}  // namespace virtual_modem::inspect
