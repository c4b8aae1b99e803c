#include "text/print.h"

#include <array>
#include <string>

namespace virtual_modem::text {
namespace {

// Below this number of messages, unknown bytes that read as a message are printed as one.
constexpr int kUnknownDepth = 10;

// The escape of a byte: none (0), three octal digits (1), or the letter after a backslash.
constexpr std::array<char, 256> MakeEscapes() {
  std::array<char, 256> escapes{};
  for (std::size_t byte = 0; byte < escapes.size(); ++byte) {
    escapes[byte] = byte < 0x20 || byte >= 0x7F ? 1 : 0;
  }
  escapes['\n'] = 'n';
  escapes['\r'] = 'r';
  escapes['\t'] = 't';
  escapes['"'] = '"';
  escapes['\''] = '\'';
  escapes['\\'] = '\\';
  return escapes;
}
constexpr std::array<char, 256> kEscapes = MakeEscapes();

// Whether one of eight bytes needs an escape, as all do but those from 0x20 to 0x7E, quotes and
// backslashes apart. Works on all of them at once: the highest bit of a byte tells.
bool NeedEscape(const char* from) {
  constexpr std::uint64_t kOnes = 0x0101010101010101;
  std::uint64_t bytes = 0;
  std::memcpy(&bytes, from, sizeof bytes);
  const auto zero = [](std::uint64_t word) { return (word - kOnes) & ~word; };
  const std::uint64_t odd = bytes | (bytes - kOnes * 0x20) | (bytes + kOnes) |
                            zero(bytes ^ kOnes * '"') | zero(bytes ^ kOnes * '\'') |
                            zero(bytes ^ kOnes * '\\');
  return (odd & kOnes * 0x80) != 0;
}

// False when a byte needs an escape; true when none was seen to.
bool ArePlain(std::string_view bytes) {
  if (bytes.size() < 8) {
    for (const char c : bytes) {
      if (kEscapes[static_cast<std::uint8_t>(c)] != 0) return false;
    }
    return true;
  }
  const char* last = bytes.data() + bytes.size() - 8;
  for (const char* at = bytes.data(); at < last; at += 8) {
    if (NeedEscape(at)) return false;
  }
  return !NeedEscape(last);
}

// The fields of a message that nobody declared, by the rules with which the runtime reads sets of
// unknown fields: they differ from those of messages, tags may have ten bytes.
class UnknownFields {
 public:
  explicit UnknownFields(std::string_view bytes) : reader_(bytes, unused_) {}

  struct Item {
    std::uint32_t number;
    WireType type;
    std::uint64_t value;     // kVarint, kFixed32, kFixed64
    std::string_view bytes;  // kLengthDelimited
  };

  bool AtEnd() const { return reader_.AtEnd(); }

  // False if the bytes are not a field.
  bool Next(Item& item) {
    std::uint64_t tag = 0;
    if (!ReadVarint(tag)) return false;
    item.number = static_cast<std::uint32_t>(tag) >> 3U;
    item.type = static_cast<WireType>(tag & 7U);
    if (item.type == kEndGroup) return true;
    if (item.number == 0) return false;
    switch (item.type) {
      case kVarint:
        return ReadVarint(item.value);
      case kFixed64:
        return ReadFixed(8, item.value);
      case kFixed32:
        return ReadFixed(4, item.value);
      case kLengthDelimited: {
        std::uint64_t length = 0;
        if (!ReadVarint(length)) return false;
        const char* const begin = reader_.at();
        item.bytes = {begin, static_cast<std::uint32_t>(length)};
        return reader_.SkipBytes(item.bytes.size());
      }
      default:
        return item.type == kStartGroup;
    }
  }

 private:
  bool ReadVarint(std::uint64_t& value) { return reader_.ReadVarint(kMaxVarintBytes, "", value); }

  bool ReadFixed(unsigned size, std::uint64_t& value) {
    const char* const begin = reader_.at();
    if (!reader_.SkipBytes(size)) return false;
    value = 0;
    for (unsigned i = 0; i < size; ++i) {
      value |= static_cast<std::uint64_t>(static_cast<std::uint8_t>(begin[i])) << (8 * i);
    }
    return true;
  }

  Outcome unused_;
  Reader reader_;
};

// Whether the fields up to the end of group (0: of the bytes) can be read, with at most budget
// groups inside one another.
bool AreFields(UnknownFields& fields, std::uint32_t group, int budget) {
  while (!fields.AtEnd()) {
    UnknownFields::Item item{};
    if (!fields.Next(item)) return false;
    if (item.type == kEndGroup) return group != 0 && item.number == group;
    if (item.type == kStartGroup && (budget == 0 || !AreFields(fields, item.number, budget - 1))) {
      return false;
    }
  }
  return group == 0;
}

class Printer : public Handler {
 public:
  Printer(const Tables& tables, Show show, bool single_line, Sink& sink)
      : tables_(tables),
        sink_(sink),
        show_(show),
        single_line_(single_line),
        separator_(single_line ? ' ' : '\n') {}

  void Number(const Level& /*level*/, const Field& field, std::uint64_t value) {
    Indent();
    char scratch[kNameSpace + kMaxDigits + 1];
    char* begin = sink_.Begin(sizeof scratch, scratch);
    char* at = WriteName(field, begin);
    if (IsMasked(field, field.repeated)) value = 0;
    at = WriteNumber(field, value, at);
    *at++ = separator_;
    sink_.Commit(begin, at);
  }

  void Enum(const Level& /*level*/, const Field& field, std::uint64_t /*value*/,
            std::string_view name) {
    Indent();
    if (Fits(name.size())) {
      char* at = WriteName(field, sink_.at());
      Sink::Copy(at, name.data(), name.size());
      at += name.size();
      *at++ = separator_;
      return sink_.Commit(sink_.at(), at);
    }
    Name(field);
    sink_.Append(name);
    sink_.Append(separator_);
  }

  void String(const Level& /*level*/, const Field& field, std::string_view bytes) {
    const bool masked = IsMasked(field, true);
    Indent();
    if (Fits(bytes.size()) && (masked || ArePlain(bytes))) {
      char* at = WriteName(field, sink_.at());
      *at++ = '"';
      if (masked) {
        std::memset(at, 'X', bytes.size());
      } else {
        Sink::Copy(at, bytes.data(), bytes.size());
      }
      at += bytes.size();
      *at++ = '"';
      *at++ = separator_;
      return sink_.Commit(sink_.at(), at);
    }
    Name(field);
    sink_.Append('"');
    if (masked) {
      sink_.Fill('X', bytes.size());
    } else {
      AppendEscaped(bytes, sink_);
    }
    sink_.Append('"');
    sink_.Append(separator_);
  }

  std::size_t Begin(const Level& /*level*/, const Field& field) {
    Indent();
    sink_.Append(tables_.NameOf(field));
    Open();
    return 0;
  }
  void End(const Level& /*level*/, const Field& /*field*/, std::size_t /*mark*/) { Close(); }

  void Undeclared(const Level& level, const Field& field, std::uint64_t value,
                  std::string_view /*whole*/) {
    if (show_ == Show::kAll) {
      UnknownFields none({});
      return Print({tables_.NumberOf(field), kVarint, value, {}}, none, kUnknownDepth);
    }
    NameUnknown(level, &field, 0);
    char digits[kMaxDigits];
    const char* end = WriteNumber(static_cast<std::int32_t>(value), digits);
    Append(remarks_, " = ", std::string_view(digits, static_cast<std::size_t>(end - digits)));
  }

  void Unknown(const Level& level, const Field* field, std::uint32_t number, WireType type,
               std::string_view whole, std::string_view value) {
    if (show_ == Show::kAll) {
      UnknownFields fields(type == kStartGroup ? value : whole);
      UnknownFields::Item item{number, type, 0, {}};
      if (type != kStartGroup) fields.Next(item);
      return Print(item, fields, kUnknownDepth);
    }
    NameUnknown(level, field, number);
    Append(remarks_, " (", whole.size(), " bytes)");
  }

  void Malformed(const Level& level, const Outcome& outcome) {
    if (!remarks_.empty()) remarks_.append(1, separator_);
    Append(remarks_, "# ", Explain(tables_, level, outcome));
  }

  // What stands after the fields.
  void Finish() {
    if (!remarks_.empty()) {
      sink_.Append(remarks_);
      sink_.Append(separator_);
    }
    if (single_line_) sink_.TakeBack(' ');
  }

 private:
  bool IsMasked(const Field& field, bool in_shape) const {
    if (show_ == Show::kAll) return false;
    return field.subscriber_data || (in_shape && show_ == Show::kShape);
  }

  void Indent() {
    if (!single_line_) sink_.Fill(' ', 2 * depth_);
  }

  // Whether a field with a value of that size can be written in one go, as the end is not near.
  bool Fits(std::size_t size) const { return sink_.Room() >= kNameSpace + size + 3; }
  // What the name of a field takes, with ": ".
  static constexpr std::size_t kNameSpace = kNamePadding + 2;
  char* WriteName(const Field& field, char* to) const {
    const std::size_t size = field.name_size;
    std::memcpy(to, tables_.names + field.name, kNamePadding);  // of a fixed size: no call
    to[size] = ':';
    to[size + 1] = ' ';
    return to + size + 2;
  }
  void Name(const Field& field) {
    char scratch[kNameSpace];
    char* begin = sink_.Begin(sizeof scratch, scratch);
    sink_.Commit(begin, WriteName(field, begin));
  }

  void Open() {
    sink_.Append(" {");
    sink_.Append(separator_);
    ++depth_;
  }
  void Close() {
    --depth_;
    Indent();
    sink_.Append('}');
    sink_.Append(separator_);
  }

  // Names what is not shown in the comment on that, such as "calls[0].15"; field may be null.
  void NameUnknown(const Level& level, const Field* field, std::uint32_t number) {
    Append(remarks_, remarks_.empty() ? "# unknown fields " : ", ");
    if (field != nullptr) {
      Append(remarks_, PathTo(tables_, level, *field));
    } else {
      Append(remarks_, PathTo(tables_, level), level.field == nullptr ? "" : ".", number);
    }
  }

  void Group(std::uint32_t number, UnknownFields& fields, int budget) {
    Indent();
    AppendNumber(std::uint64_t{number}, sink_);
    Open();
    PrintAll(fields, budget - 1);
    Close();
  }

  // Up to the end of the group or of the bytes, which were read before.
  void PrintAll(UnknownFields& fields, int budget) {
    UnknownFields::Item item{};
    while (!fields.AtEnd() && fields.Next(item) && item.type != kEndGroup) {
      Print(item, fields, budget);
    }
  }

  void Print(const UnknownFields::Item& item, UnknownFields& fields, int budget) {
    if (item.type == kStartGroup) return Group(item.number, fields, budget);
    Indent();
    AppendNumber(item.number, sink_);
    if (item.type == kLengthDelimited) {
      UnknownFields tried(item.bytes);
      if (!item.bytes.empty() && budget > 0 && AreFields(tried, 0, budget)) {
        UnknownFields inside(item.bytes);
        Open();
        PrintAll(inside, budget - 1);
        return Close();
      }
      sink_.Append(": \"");
      AppendEscaped(item.bytes, sink_);
      sink_.Append('"');
    } else if (item.type == kVarint) {
      sink_.Append(": ");
      AppendNumber(item.value, sink_);
    } else {
      sink_.Append(": 0x");
      for (int shift = item.type == kFixed32 ? 28 : 60; shift >= 0; shift -= 4) {
        sink_.Append("0123456789abcdef"[item.value >> static_cast<unsigned>(shift) & 0xFU]);
      }
    }
    sink_.Append(separator_);
  }

  const Tables& tables_;
  Sink& sink_;
  const Show show_;
  const bool single_line_;
  const char separator_;
  std::size_t depth_ = 0;
  std::string remarks_;  // fields that are not shown, and where the bytes break
};

}  // namespace

void AppendNumber(std::uint64_t number, Sink& sink) {
  char scratch[kMaxDigits];
  char* begin = sink.Begin(kMaxDigits, scratch);
  sink.Commit(begin, WriteNumber(number, begin));
}

void Sink::AppendWhatFits(std::string_view text) {
  const std::size_t fits = text.size() < Room() ? text.size() : Room();
  std::memcpy(at_, text.data(), fits);
  at_ += fits;
  lost_ += text.size() - fits;
}

void AppendEscaped(std::string_view bytes, Sink& sink) {
  if (ArePlain(bytes)) return sink.Append(bytes);
  const char* plain = bytes.data();  // the beginning of what needs no escape
  const char* end = plain + bytes.size();
  for (const char* at = plain; at != end; ++at) {
    const auto byte = static_cast<std::uint8_t>(*at);
    const char escape = kEscapes[byte];
    if (escape == 0) continue;
    sink.Append({plain, static_cast<std::size_t>(at - plain)});
    plain = at + 1;
    sink.Append('\\');
    if (escape != 1) {
      sink.Append(escape);
    } else {
      sink.Append(static_cast<char>('0' + (byte >> 6U)));
      sink.Append(static_cast<char>('0' + (byte >> 3U & 7U)));
      sink.Append(static_cast<char>('0' + (byte & 7U)));
    }
  }
  sink.Append({plain, static_cast<std::size_t>(end - plain)});
}

Outcome Print(const Tables& tables, unsigned message, std::string_view bytes, Show show,
              bool single_line, Sink& sink) {
  Printer printer(tables, show, single_line, sink);
  const Outcome outcome = WalkMessage(tables, message, bytes, printer);
  printer.Finish();
  return outcome;
}

}  // namespace virtual_modem::text
