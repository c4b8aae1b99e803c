// For tests of programs that use the messages: prints and compares them. Needs no header of
// GoogleTest and no registration with it:
//
//   EXPECT_EQ(FirstDifference(sent, expected), "");  // says "calls[1].number"
//   EXPECT_EQ(sent, expected);                       // prints both
//
// Part of libvirtual-modem-text; link VirtualModemProtos::text.
#pragma once

#include <google/protobuf/message_lite.h>
#include <virtual_modem/message_list.h>
#include <virtual_modem/text.h>

#include <algorithm>
#include <atomic>
#include <cstddef>
#include <ostream>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace virtual_modem {

// For operator<< below, in the whole process: subscriber data is masked unless this is set.
inline std::atomic<bool> show_subscriber_data{false};

namespace internal {

// The text of a message, line by line.
class Lines {
 public:
  explicit Lines(const google::protobuf::MessageLite& message)
      : text_(ToText(message, {true, false, 0})) {
    for (std::string_view left = text_; !left.empty();) {
      all_.push_back(left.substr(0, left.find('\n')));
      left.remove_prefix(all_.back().size() + 1);
    }
  }

  // The index of the first line that differs.
  static std::size_t Mismatch(const Lines& a, const Lines& b) {
    const auto end = std::mismatch(a.all_.begin(), a.all_.end(), b.all_.begin(), b.all_.end());
    return static_cast<std::size_t>(end.first - a.all_.begin());
  }

  // The end of a message has the message's depth, one less than its fields; 0 after the last line.
  std::size_t DepthOf(std::size_t line) const {
    return line < all_.size() ? all_[line].find_first_not_of(' ') / 2 + 1 : 0;
  }
  std::string_view NameOf(std::size_t line) const {
    const std::string_view field = all_[line].substr(all_[line].find_first_not_of(' '));
    return field[0] == '#' ? "an unknown field" : field.substr(0, field.find_first_of(": "));
  }
  // Whether the message that has the line has another field of that name after it.
  bool HasAfter(std::size_t line, std::size_t depth, std::string_view name) const {
    while (DepthOf(++line) >= depth) {
      if (DepthOf(line) == depth && NameOf(line) == name) return true;
    }
    return false;
  }

  // The path of the field on the line. The other text is the same up to there.
  std::string PathOf(std::size_t line, const Lines& other) const {
    std::string path;
    const std::size_t end = line;
    for (std::size_t depth = DepthOf(line); depth > 0; --depth) {
      while (DepthOf(line) != depth) --line;
      const std::string_view name = NameOf(line);
      std::size_t index = 0;
      for (std::size_t at = line; at > 0 && DepthOf(at - 1) >= depth; --at) {
        if (DepthOf(at - 1) == depth && NameOf(at - 1) == name) ++index;
      }
      std::string here(name);
      if (index > 0 || HasAfter(line, depth, name) || other.HasAfter(line, depth, name)) {
        here += '[' + std::to_string(index) + ']';
      }
      if (line != end) here += '.' + path;
      path = std::move(here);
    }
    return path;
  }

 private:
  std::string text_;
  std::vector<std::string_view> all_;
};

}  // namespace internal

// Empty if both messages are of one type and have the same fields, unknown ones included; an absent
// field differs from one set to its default. Else the path of the first field that differs: "clir",
// "calls[1].number" (a list of one element has no index), or the number of an unknown field; with a
// remark if only one of the messages has it. For different types it is "Dial and Hangup". Shows no
// content.
inline std::string FirstDifference(const google::protobuf::MessageLite& first,
                                   const google::protobuf::MessageLite& second) {
  const std::string type = first.GetTypeName();
  if (type != second.GetTypeName()) return type + " and " + second.GetTypeName();
  if (first.SerializePartialAsString() == second.SerializePartialAsString()) return {};
  const internal::Lines a(first);
  const internal::Lines b(second);
  const std::size_t line = internal::Lines::Mismatch(a, b);
  const std::size_t depth = a.DepthOf(line);
  const std::size_t other = b.DepthOf(line);
  if (depth == 0 && other == 0) return "the encoding of unknown fields";
  if (depth == other && a.NameOf(line) == b.NameOf(line)) return a.PathOf(line, b);
  if (depth < other || (depth == other && b.HasAfter(line, depth, a.NameOf(line)))) {
    return b.PathOf(line, a) + " (only in the second)";
  }
  return a.PathOf(line, b) + " (only in the first)";
}

}  // namespace virtual_modem

// Found for every message, because its base class is in this namespace.
namespace google::protobuf {

// The type and ToText() of a message.
inline std::ostream& operator<<(std::ostream& out, const MessageLite& message) {
  virtual_modem::TextOptions options;
  options.show_subscriber_data = virtual_modem::show_subscriber_data;
  options.max_bytes = 0;
  const std::string text = virtual_modem::ToText(message, options);
  return out << message.GetTypeName() << " { " << text << (text.empty() ? "}" : " }");
}

// GoogleTest of 1.13 and later asks a message for its debug string before it looks for operator<<,
// and a lite message has none worth reading; a function of the very class is asked first.
#define VIRTUAL_MODEM_PRINT_TO(name, cpp_class, unit) \
  inline void PrintTo(const cpp_class& message, std::ostream* out) { *out << message; }
VIRTUAL_MODEM_MESSAGES(VIRTUAL_MODEM_PRINT_TO)
#undef VIRTUAL_MODEM_PRINT_TO

inline bool operator==(const MessageLite& first, const MessageLite& second) {
  return virtual_modem::FirstDifference(first, second).empty();
}
inline bool operator!=(const MessageLite& first, const MessageLite& second) {
  return !(first == second);
}

}  // namespace google::protobuf
