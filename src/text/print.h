// Prints encoded messages in protobuf's text format, letter for letter as the full runtime does,
// with subscriber data masked or shown.
#pragma once

#include <charconv>
#include <cstddef>
#include <cstring>
#include <string>
#include <string_view>

#include "text/tables.h"
#include "text/walk.h"

namespace virtual_modem::text {

// Where text goes: a bounded buffer that counts what does not fit, as snprintf does.
class Sink {
 public:
  Sink(char* buffer, std::size_t capacity) : begin_(buffer), at_(buffer), end_(buffer + capacity) {}

  void Append(std::string_view text) {
    if (text.size() > Room()) return AppendWhatFits(text);
    Copy(at_, text.data(), text.size());
    at_ += text.size();
  }
  void Append(char c) {
    if (at_ < end_) {
      *at_++ = c;
    } else {
      ++lost_;
    }
  }
  void Fill(char c, std::size_t count) {
    const std::size_t fits = count < Room() ? count : Room();
    std::memset(at_, c, fits);
    at_ += fits;
    lost_ += count - fits;
  }
  // Takes the last character back if it is c.
  void TakeBack(char c) {
    if (lost_ > 0) {
      --lost_;
    } else if (at_ > begin_ && at_[-1] == c) {
      --at_;
    }
  }

  std::size_t Room() const { return static_cast<std::size_t>(end_ - at_); }
  char* at() const { return at_; }
  // For writers of a few bytes: where size of them can be written, in the buffer when there is
  // room, else in scratch; and how many were.
  char* Begin(std::size_t size, char* scratch) { return size <= Room() ? at_ : scratch; }
  void Commit(const char* begin, const char* end) {
    const auto size = static_cast<std::size_t>(end - begin);
    if (begin == at_) {
      at_ += size;
    } else {
      AppendWhatFits({begin, size});
    }
  }

  std::string_view text() const { return {begin_, static_cast<std::size_t>(at_ - begin_)}; }
  std::size_t lost() const { return lost_; }

  // As memcpy, without a call for the short texts that most are.
  static void Copy(char* to, const char* from, std::size_t size) {
    if (size > 32) {
      std::memcpy(to, from, size);
    } else if (size >= 16) {
      CopyEnds<16>(to, from, size);
    } else if (size >= 8) {
      CopyEnds<8>(to, from, size);
    } else if (size >= 4) {
      CopyEnds<4>(to, from, size);
    } else {
      for (std::size_t i = 0; i < size; ++i) to[i] = from[i];
    }
  }

 private:
  // The first and the last Width bytes, which meet or overlap.
  template <std::size_t Width>
  static void CopyEnds(char* to, const char* from, std::size_t size) {
    char first[Width];
    char last[Width];
    std::memcpy(first, from, Width);
    std::memcpy(last, from + size - Width, Width);
    std::memcpy(to, first, Width);
    std::memcpy(to + size - Width, last, Width);
  }

  __attribute__((noinline, cold)) void AppendWhatFits(std::string_view text);

  char* begin_;
  char* at_;
  char* end_;
  std::size_t lost_ = 0;
};

// What a printer leaves out.
enum class Show : std::uint8_t {
  kAll,
  // X for each byte of a string of subscriber data and 0 for a number of it; of unknown fields, of
  // which nobody knows what they hold, no more than number and size.
  kMasked,
  // As kMasked, and no string or list of numbers at all: for bytes that do not fit their type and
  // may be another one's.
  kShape,
};

// Prints bytes as the message, an index into tables.messages. A field whose bytes break is left
// out, every message begun is closed. After the fields stand, as comments, which unknown fields are
// not shown, and where and why the bytes break. On one line the text has no separator at its end;
// else every line ends with one.
Outcome Print(const Tables& tables, unsigned message, std::string_view bytes, Show show,
              bool single_line, Sink& sink);

inline char* WriteNumber(std::uint32_t number, char* to) {
  if (number < 10) {
    *to = static_cast<char>('0' + number);
    return to + 1;
  }
  return std::to_chars(to, to + kMaxDigits, number).ptr;
}

inline char* WriteNumber(std::int32_t number, char* to) {
  if (number < 0) *to++ = '-';
  const auto bits = static_cast<std::uint32_t>(number);
  return WriteNumber(number < 0 ? 0 - bits : bits, to);
}

// Writes a number of the field as text, in which a bool is true or false, and returns where it
// ends: kMaxDigits at most.
inline char* WriteNumber(const Field& field, std::uint64_t number, char* to) {
  switch (field.kind) {
    case FieldKind::kUint32:
      return WriteNumber(static_cast<std::uint32_t>(number), to);
    case FieldKind::kInt64:
      if (static_cast<std::int64_t>(number) < 0) {
        *to++ = '-';
        number = 0 - number;
      }
      [[fallthrough]];
    case FieldKind::kUint64:
      return WriteNumber(number, to);
    case FieldKind::kBool:
      std::memcpy(to, number != 0 ? "true\0\0\0" : "false\0\0", 8);  // of a fixed size: no call
      return to + (number != 0 ? 4 : 5);
    default:
      return WriteNumber(static_cast<std::int32_t>(number), to);
  }
}

void AppendNumber(std::uint64_t number, Sink& sink);

// Appends bytes with the escapes of a string of the text format.
void AppendEscaped(std::string_view bytes, Sink& sink);

}  // namespace virtual_modem::text
