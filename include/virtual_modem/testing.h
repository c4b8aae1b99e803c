// For tests of programs that use the messages: prints and compares them. Nothing of GoogleTest is
// needed, and nothing is to be said to it:
//
//   EXPECT_EQ(FirstDifference(sent, expected), "");  // says "calls[1].number"
//   EXPECT_EQ(sent, expected);                       // prints both
//
// Part of libvirtual-modem-text; link VirtualModemProtos::text.
#pragma once

#include <google/protobuf/message_lite.h>
#include <virtual_modem/text.h>

#include <atomic>
#include <ostream>
#include <string>

#pragma GCC visibility push(default)

namespace virtual_modem {

// Empty when both messages are of one type and have the same fields, unknown ones included; a field
// that is absent is not the same as its default. Else where they differ first, in the order of the
// schema, by the path that MissingFields() uses: "clir", "calls[1].number", of an unknown field
// "calls[1].20"; with a remark when only one of them has the field. Names no content. Messages of
// another library differ, and so do two types: "Dial and Hangup".
std::string FirstDifference(const google::protobuf::MessageLite& first,
                            const google::protobuf::MessageLite& second);

// What operator<< below shows, in all of the process: subscriber data is masked unless this is set.
inline std::atomic<bool> show_subscriber_data{false};

}  // namespace virtual_modem

#pragma GCC visibility pop

// Where they are found for every message, as this is the namespace of the messages' base class.
namespace google::protobuf {

// The type and ToText() of a message.
inline std::ostream& operator<<(std::ostream& out, const MessageLite& message) {
  virtual_modem::TextOptions options;
  options.show_subscriber_data = virtual_modem::show_subscriber_data;
  options.max_bytes = 0;
  const std::string text = virtual_modem::ToText(message, options);
  return out << message.GetTypeName() << " { " << text << (text.empty() ? "}" : " }");
}

inline bool operator==(const MessageLite& first, const MessageLite& second) {
  return virtual_modem::FirstDifference(first, second).empty();
}
inline bool operator!=(const MessageLite& first, const MessageLite& second) {
  return !(first == second);
}

}  // namespace google::protobuf
