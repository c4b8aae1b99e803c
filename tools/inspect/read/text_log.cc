#include <algorithm>
#include <charconv>
#include <ctime>
#include <memory>
#include <optional>

#include "inspect/error.h"
#include "inspect/read/hex.h"
#include "inspect/read/pasted.h"
#include "inspect/read/recording.h"
#include "inspect/read/text_form.h"
#include "text/walk.h"

namespace virtual_modem::inspect {
namespace {

// A line of a log is shorter: the rest of a longer one is read as another.
constexpr std::size_t kMaxLine = 1U << 20U;
// Places in a line where a text is tried.
constexpr int kTries = 8;
constexpr std::int64_t kDay = 86'400;
constexpr std::int64_t kSecond = 1'000'000'000;

// Whether the text is of the pattern, in which 0 stands for a digit.
bool Looks(std::string_view text, std::string_view pattern) {
  if (text.size() < pattern.size()) return false;
  for (std::size_t i = 0; i < pattern.size(); ++i) {
    if (pattern[i] == '0' ? !IsDigit(text[i]) : text[i] != pattern[i]) return false;
  }
  return true;
}

int TwoDigits(std::string_view text) { return (text[0] - '0') * 10 + (text[1] - '0'); }

// The next run of letters, digits, underscores and dots from at on, which becomes its end; empty at
// the end of the line.
std::string_view TakeWord(std::string_view line, std::size_t& at) {
  const auto in_word = [](char c) { return IsWord(c) || c == '.'; };
  while (at < line.size() && !in_word(line[at])) ++at;
  const std::size_t begin = at;
  while (at < line.size() && in_word(line[at])) ++at;
  return line.substr(begin, at - begin);
}

// Takes what the text begins with, if it does.
bool Take(std::string_view& text, std::string_view front) {
  if (text.substr(0, front.size()) != front) return false;
  text.remove_prefix(front.size());
  return true;
}

std::optional<std::uint32_t> TakeNumber(std::string_view& text) {
  std::uint32_t number = 0;
  const auto result = std::from_chars(text.data(), text.data() + text.size(), number);
  if (result.ec != std::errc()) return std::nullopt;
  text.remove_prefix(static_cast<std::size_t>(result.ptr - text.data()));
  return number;
}

bool HasLetters(std::string_view text) {
  return std::any_of(text.begin(), text.end(), [](char c) { return IsWord(c) && !IsDigit(c); });
}

// Whether the text of a message can begin with the word; times of day do not.
bool IsField(const Descriptor& type, std::string_view word, std::string_view rest) {
  if (rest.substr(0, 1) != ":" && rest.substr(0, 2) != " {") return false;
  if (word.empty() || !IsDigit(word[0])) return type.FindFieldByName(std::string(word)) != nullptr;
  return rest.substr(0, 2) == ": " && std::all_of(word.begin(), word.end(), IsDigit);
}

constexpr const char* kBeginningOnly = "the log has only the beginning";

// Why a message is not whole, as the comment after its text says it.
std::string Problem(std::string_view comment) {
  comment = TrimLeft(comment);
  if (!Take(comment, "# ")) return "";
  if (comment.substr(0, 9) == "malformed") return kBeginningOnly;
  const bool ours = comment.substr(0, 4) == "the ";
  return ours ? std::string(comment.substr(0, comment.find("; "))) : "";
}

// The name of a type in a line, and what stands around it.
struct Header {
  const TypeInfo* type = nullptr;
  std::size_t begin = 0;  // of the name
  std::size_t end = 0;    // of it and of what belongs to it
  std::optional<Direction> direction;
  unsigned operation = 0;
  bool known = false;  // a form in which nothing but messages stand: arrow, name and numbers
  bool sized = false;  // the number of bytes is one of them, so that text follows

  Header() = default;
  // Reads "-> Dial/3 ", "> Dial op 3 #1 11 B " and "-> Dial             11  ".
  Header(const TypeInfo* named, std::string_view line, std::size_t name, std::size_t name_end)
      : type(named), begin(name), end(name_end) {
    const std::size_t arrow = line.substr(0, begin).find_last_not_of(' ');
    if (arrow == std::string_view::npos || arrow + 1 == begin) return;
    const bool tailed = line[arrow] == '-' && arrow > 0 && line[arrow - 1] == '<';
    if (line[arrow] == '>') direction = Direction::kToModem;
    if (line[arrow] == '<' || tailed) direction = Direction::kToTelephony;
    if (!direction) return;
    std::string_view rest = line.substr(end);
    if (Take(rest, "/")) {
      operation = TakeNumber(rest).value_or(0);
      known = rest.empty() || rest.front() == ' ';
    } else {
      if (Take(rest, " op ")) operation = TakeNumber(rest).value_or(0);
      bool own = Take(rest, " - ");
      if (!own && Take(rest, " #")) {
        Take(rest, "-");
        own = TakeNumber(rest) && Take(rest, " ");
      }
      const bool columns = !own && Take(rest, " ");
      while (columns && Take(rest, " ")) {
      }
      sized = (own || columns) && TakeNumber(rest) && Take(rest, own ? " B" : "  ");
      known = sized;
    }
    if (known) end = line.size() - rest.size();
  }
};

class TextLogReader : public Traffic {
 public:
  TextLogReader(const Schema& schema, ByteStream& stream) : schema_(schema), stream_(stream) {}

  bool Next(Record& record) override {
    while (NextLine()) {
      ++number_;
      if (ReadLine(record)) return true;
      if (!Trim(line_).empty()) ++other_lines_;
    }
    return false;
  }

  std::string PassedOver() const override {
    if (other_lines_ == 0) return "";
    return "lines without the type and the content of a message: " + std::to_string(other_lines_);
  }

 private:
  bool NextLine() {
    for (;;) {
      const std::size_t end = buffer_.find('\n', begin_);
      if (end != std::string::npos || buffer_.size() - begin_ >= kMaxLine) {
        const std::size_t size = std::min(end - begin_, kMaxLine);
        line_ = std::string_view(buffer_).substr(begin_, size);
        begin_ += size + (end != std::string::npos && size == end - begin_ ? 1 : 0);
        return true;
      }
      buffer_.erase(0, begin_);
      begin_ = 0;
      if (!stream_.AppendTo(buffer_)) {
        line_ = buffer_;
        begin_ = buffer_.size();
        return !line_.empty();
      }
    }
  }

  bool ReadLine(Record& record) {
    Header first;
    Header header;
    int tries = 0;
    bool direct = true;  // no word stands after the header
    record.problem.clear();
    for (std::size_t at = 0; at < line_.size();) {
      const std::string_view word = TakeWord(line_, at);
      const std::size_t begin = at - word.size();
      std::string_view rest = line_.substr(at);
      if (const TypeInfo* type = schema_.FindType(word)) {
        header = Header(type, line_, begin, at);
        at = header.end;
        rest = TrimLeft(line_.substr(at));
        direct = true;
        if (first.type == nullptr) first = header;
        if (!header.known ||
            !(rest.empty() || rest[0] == '#' || (rest[0] == '(' && header.sized))) {
          continue;
        }
        bytes_.clear();  // a message without fields
        record.problem = Problem(rest);
        return Fill(header, record);
      }
      // A client's remark on a message that it passed over.
      if (word == "ignored" && header.type == nullptr && rest.substr(0, 1) == ":") return false;
      if (word.empty() || header.type == nullptr || tries == kTries) continue;
      direct = direct || header.known;
      if ((direct || !IsDigit(word[0])) && IsField(*header.type->type, word, rest)) {
        ++tries;
        if (ReadText(header, line_.substr(begin), direct, record)) return true;
      }
      direct = direct && !HasLetters(word);
    }
    return first.type != nullptr && !first.sized && ReadHex(first, record);
  }

  bool ReadText(const Header& header, std::string_view text, bool direct, Record& record) {
    const TextForm form = TakeTextForm(text);
    if (form.fields == 0 && !form.cut) return false;
    const std::unique_ptr<Message> message = schema_.NewMessage(*header.type->type);
    if (!ParseText(form.text, true, *message).empty()) return false;
    // Of words that stand between, only a whole message tells that they are about it.
    if (!direct && (form.cut || !message->IsInitialized())) return false;
    bytes_ = message->SerializePartialAsString();
    record.problem = form.cut ? kBeginningOnly : Problem(text.substr(form.end));
    return Fill(header, record);
  }

  bool ReadHex(Header header, Record& record) {
    const std::string_view rest = line_.substr(header.end);
    std::size_t begin = header.end;
    try {
      const std::optional<HexRun> run = FindHexRun(rest);
      if (!run) return false;
      bytes_ = run->bytes;
      begin += run->begin;
    } catch (const Error& error) {
      const std::size_t text = rest.find_first_not_of(" \t:=>(-{");
      if (text == std::string_view::npos || HexDigit(rest[text]) < 0) return false;
      record.problem = error.what();
      bytes_.clear();
      return Fill(header, record);
    }
    for (std::size_t at = header.end; at < begin;) {
      const std::string_view word = TakeWord(line_.substr(0, begin), at);
      const TypeInfo* type = schema_.FindType(word);
      if (type != nullptr) header = Header(type, line_, at - word.size(), at);
    }
    if (HasLetters(line_.substr(header.end, begin - header.end))) {
      text::Handler none;
      const text::Outcome outcome =
          text::WalkMessage(schema_.tables(), header.type->index, bytes_, none);
      if (outcome.doubtful() || outcome.unknown != 0) return false;
    }
    return Fill(header, record);
  }

  bool Fill(const Header& header, Record& record) {
    record.number = number_;
    ReadTime(line_.substr(0, header.begin), record);
    const bool to_modem = header.type->kind == "request";
    record.direction =
        header.direction.value_or(to_modem ? Direction::kToModem : Direction::kToTelephony);
    record.operation = header.operation;
    record.name = header.type->type->full_name();
    record.type = header.type;
    record.bytes = bytes_;
    return true;
  }

  void ReadTime(std::string_view line, Record& record) {
    record.time = kNoTime;
    record.time_text = "-";
    std::size_t at = 0;
    while (at < line.size() &&
           (!Looks(line.substr(at), "00:00:00") || (at > 0 && IsDigit(line[at - 1])))) {
      ++at;
    }
    if (at >= line.size()) {
      line = TrimLeft(line);
      std::string_view rest = line;
      const std::optional<std::uint32_t> whole = TakeNumber(rest);
      if (!whole || !Looks(rest, ".00 ")) return;
      if (rest.find_first_not_of("<-> ", 4) != std::string_view::npos) return;
      record.time =
          *whole * std::int64_t{1'000'000} + TwoDigits(rest.substr(1)) * std::int64_t{10'000};
      record.time_text = line.substr(0, line.size() - rest.size() + 3);
      return;
    }
    std::size_t end = at + 8;
    std::int64_t fraction = 0;
    std::int64_t unit = kSecond;
    if (end + 1 < line.size() && (line[end] == '.' || line[end] == ',') && IsDigit(line[end + 1])) {
      for (++end; end < line.size() && IsDigit(line[end]); ++end) {
        unit /= 10;
        fraction += (line[end] - '0') * unit;
      }
    }
    const bool dated = at >= 6 && Looks(line.substr(at - 6), "00-00");
    const bool has_year = dated && at >= 11 && Looks(line.substr(at - 11), "0000-");
    const std::size_t begin = at - (has_year ? 11 : (dated ? 6 : 0));
    const auto in_year = [&](int year) {
      std::tm parts{};
      parts.tm_year = year - 1900;
      parts.tm_mon = dated ? TwoDigits(line.substr(at - 6)) - 1 : 0;
      parts.tm_mday = dated ? TwoDigits(line.substr(at - 3)) : 1;
      parts.tm_hour = TwoDigits(line.substr(at));
      parts.tm_min = TwoDigits(line.substr(at + 3));
      parts.tm_sec = TwoDigits(line.substr(at + 6));
      return std::int64_t{timegm(&parts)};
    };
    int year = 1970;
    if (has_year) year = TwoDigits(line.substr(begin)) * 100 + TwoDigits(line.substr(begin + 2));
    if (dated && !has_year) {
      // A line more than half a year from the one before it is on the other side of New Year.
      if (latest_ >= 0 && in_year(year_) < latest_ - 183 * kDay) ++year_;
      if (latest_ >= 0 && in_year(year_) > latest_ + 183 * kDay) --year_;
      year = year_;
      latest_ = in_year(year);
    }
    record.time_text = line.substr(begin, end - begin);
    record.time = NanosecondsSince1970(in_year(year), fraction);
  }

  const Schema& schema_;
  ByteStream& stream_;
  std::string buffer_;
  std::size_t begin_ = 0;
  std::string_view line_;
  std::int64_t number_ = 0;
  std::int64_t other_lines_ = 0;
  std::string bytes_;
  int year_ = 2001;           // of dates that say none
  std::int64_t latest_ = -1;  // the last of them, in seconds
};

}  // namespace

std::unique_ptr<Traffic> ReadLog(const Schema& schema, ByteStream& stream) {
  return std::make_unique<TextLogReader>(schema, stream);
}

}  // namespace virtual_modem::inspect
