#include "inspect/read/text_log.h"

#include <algorithm>
#include <cctype>
#include <ctime>

#include "inspect/error.h"
#include "inspect/read/pasted.h"

namespace virtual_modem::inspect {
namespace {

// A line of a log is shorter: the rest of a longer one is read as another.
constexpr std::size_t kMaxLine = 1U << 20U;

bool IsDigit(char c) { return c >= '0' && c <= '9'; }
bool IsNameCharacter(char c) {
  return std::isalnum(static_cast<unsigned char>(c)) != 0 || c == '_' || c == '.';
}

// Whether the text is of the pattern, in which 0 stands for a digit.
bool Looks(std::string_view text, std::string_view pattern) {
  if (text.size() < pattern.size()) return false;
  for (std::size_t i = 0; i < pattern.size(); ++i) {
    if (pattern[i] == '0' ? !IsDigit(text[i]) : text[i] != pattern[i]) return false;
  }
  return true;
}

int TwoDigits(std::string_view text) { return (text[0] - '0') * 10 + (text[1] - '0'); }

// The first time of day in the line, with the date before it if there is one.
void FindTime(std::string_view line, Record& record) {
  record.time = kNoTime;
  record.time_text = "-";
  for (std::size_t at = 0; at < line.size(); ++at) {
    if (!Looks(line.substr(at), "00:00:00") || (at > 0 && IsDigit(line[at - 1]))) continue;
    std::size_t end = at + 8;
    std::int64_t fraction = 0;
    std::int64_t unit = 1'000'000'000;
    if (end + 1 < line.size() && (line[end] == '.' || line[end] == ',') && IsDigit(line[end + 1])) {
      for (++end; end < line.size() && IsDigit(line[end]); ++end) {
        unit /= 10;
        fraction += (line[end] - '0') * unit;
      }
    }
    std::size_t begin = at;
    std::int64_t days = 0;
    if (at >= 6 && Looks(line.substr(at - 6), "00-00")) {
      std::tm date{};
      date.tm_mon = TwoDigits(line.substr(at - 6)) - 1;
      date.tm_mday = TwoDigits(line.substr(at - 3));
      date.tm_year = 70;
      begin = at - 6;
      if (at >= 11 && Looks(line.substr(at - 11), "0000-")) {
        begin = at - 11;
        date.tm_year =
            TwoDigits(line.substr(begin)) * 100 + TwoDigits(line.substr(begin + 2)) - 1900;
      }
      days = timegm(&date) / 86'400;
    }
    const std::int64_t seconds = TwoDigits(line.substr(at)) * 3600 +
                                 TwoDigits(line.substr(at + 3)) * 60 +
                                 TwoDigits(line.substr(at + 6));
    record.time = (days * 86'400 + seconds) * 1'000'000'000 + fraction;
    record.time_text = line.substr(begin, end - begin);
    return;
  }
}

// Texts that were cut to the length of a log's line say so.
bool CutAtMark(std::string_view& text) {
  const std::size_t mark = text.rfind(" [... ");
  if (mark == std::string_view::npos || text.find(" more bytes]", mark) == std::string_view::npos)
    return false;
  text = text.substr(0, mark);
  return true;
}

// The places where a field can end in a text that was cut, and the messages open there, innermost
// last first: what is behind a place is given up.
std::string CloseAt(std::string_view text, std::size_t end) {
  std::string closed(text.substr(0, end));
  int open = 0;
  bool quoted = false;
  for (std::size_t i = 0; i < end; ++i) {
    if (quoted && text[i] == '\\') {
      ++i;
    } else if (text[i] == '"') {
      quoted = !quoted;
    } else if (!quoted) {
      open += text[i] == '{' ? 1 : (text[i] == '}' ? -1 : 0);
    }
  }
  if (quoted) return "";
  return closed.append(static_cast<std::size_t>(std::max(open, 0)), '}');
}

}  // namespace

bool TextLogReader::NextLine() {
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
    const std::size_t old = buffer_.size();
    constexpr std::size_t kBlock = 1U << 16U;
    buffer_.resize(old + kBlock);
    const std::size_t count = stream_.Read(&buffer_[old], kBlock);
    buffer_.resize(old + count);
    if (count == 0) {
      line_ = buffer_;
      begin_ = buffer_.size();
      return !line_.empty();
    }
  }
}

bool TextLogReader::Next(Record& record) {
  while (NextLine()) {
    ++number_;
    if (ReadLine(record)) return true;
    if (!line_.empty()) ++other_lines_;
  }
  return false;
}

bool TextLogReader::ReadLine(Record& record) {
  for (std::size_t at = 0; at < line_.size();) {
    const std::size_t begin = at;
    while (at < line_.size() && IsNameCharacter(line_[at])) ++at;
    if (at == begin) {
      ++at;
      continue;
    }
    const TypeInfo* type = schema_.FindType(line_.substr(begin, at - begin));
    if (type == nullptr) continue;
    record.problem.clear();
    if (!ReadMessage(*type, line_.substr(at), record)) continue;
    record.number = number_;
    FindTime(line_.substr(0, begin), record);
    record.direction = type->kind == Kind::kRequest ? Direction::kToModem : Direction::kToTelephony;
    record.name = type->type->full_name();
    record.type = type;
    record.bytes = bytes_;
    return true;
  }
  return false;
}

bool TextLogReader::ReadMessage(const TypeInfo& type, std::string_view rest, Record& record) {
  // Text begins with a field of the type.
  std::size_t field = 0;
  while (field < rest.size() &&
         std::string_view(" \t:=>(-{").find(rest[field]) != std::string_view::npos) {
    ++field;
  }
  std::size_t end = field;
  while (end < rest.size() && IsNameCharacter(rest[end])) ++end;
  const std::string_view behind = rest.substr(end);
  const bool value = behind.substr(0, 1) == ":" || behind.substr(0, 2) == " {";
  if (value && type.type->FindFieldByName(std::string(rest.substr(field, end - field)))) {
    const bool braced = rest.substr(0, field).find('{') != std::string_view::npos;
    std::string_view text = rest.substr(field);
    if (braced) text = text.substr(0, text.rfind('}'));
    return ReadText(type, text, record);
  }
  std::size_t begin = 0;
  try {
    return FindHexRun(rest, bytes_, begin, end);
  } catch (const Error& error) {
    record.problem = error.what();
    bytes_.clear();
    return true;
  }
}

bool TextLogReader::ReadText(const TypeInfo& type, std::string_view text, Record& record) {
  class Silent : public google::protobuf::io::ErrorCollector {
    void AddError(int, google::protobuf::io::ColumnNumber, const std::string&) override {}
    void AddWarning(int, google::protobuf::io::ColumnNumber, const std::string&) override {}
  };
  Silent silent;
  google::protobuf::TextFormat::Parser parser;
  parser.RecordErrorsTo(&silent);
  parser.AllowPartialMessage(true);
  parser.AllowUnknownField(true);
  parser.AllowFieldNumber(true);
  const std::unique_ptr<Message> message(factory_.GetPrototype(type.type)->New());
  const bool cut = CutAtMark(text);
  bool read = !cut && parser.ParseFromString(std::string(text), message.get());
  // Of a text that was cut, what ends before one of its last spaces is whole.
  constexpr int kTries = 32;
  std::size_t end = text.size();
  for (int i = 0; cut && !read && i < kTries && end != std::string_view::npos && end > 0; ++i) {
    const std::string whole = CloseAt(text, end);
    read = !whole.empty() && parser.ParseFromString(whole, message.get());
    end = text.rfind(' ', end - 1);
  }
  if (cut) record.problem = "the log holds the beginning only";
  if (!read) return false;
  bytes_ = message->SerializePartialAsString();
  return true;
}

std::string TextLogReader::PassedOver() const {
  if (other_lines_ == 0) return "";
  return "lines without the type and the content of a message: " + std::to_string(other_lines_);
}

}  // namespace virtual_modem::inspect
