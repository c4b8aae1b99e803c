// Messages as text, for logs and for people: every message of the library prints itself, with
// subscriber data masked unless one asks for it. Part of libvirtual-modem-text; link
// VirtualModemProtos::text.
//
// What is masked is what proto/virtual_modem/subscriber_data.txt lists: each byte of such a string
// reads X, each such number 0. Nobody knows what unknown fields hold, so their values are masked as
// well. What tells versions and faults apart is shown: numbers that an enumeration does not
// declare, the numbers and sizes of unknown fields, which fields are missing, where bytes break.
//
// Different messages may be used from different threads at once, and so may one message that no
// thread changes. Nothing throws but for lack of memory; no RTTI is needed.
#pragma once

#ifdef _GLIBCXX_DEBUG
#error "_GLIBCXX_DEBUG changes the containers that this library shares: use _GLIBCXX_ASSERTIONS"
#endif

#include <google/protobuf/message_lite.h>

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#pragma GCC visibility push(default)

namespace virtual_modem {

struct TextOptions {
  bool show_subscriber_data = false;  // and what unknown fields hold
  bool single_line = true;            // else a line a field, indented by two spaces a level
  // The longest text, in bytes, 0 for any length. A longer text is cut and ends with how much is
  // missing, such as " [... 512 more bytes]"; that mark is whole even where it alone is longer. The
  // default fits a line of Android's log.
  std::size_t max_bytes = 4000;
};

// The message in protobuf's text format, letter for letter as the full runtime prints it when
// everything is shown: `virtual-modem-inspect encode` and `protoc --encode` read it back, where it
// holds no unknown field and was not cut. Masked text can be parsed as well: a comment at its end
// names the unknown fields, such as "# unknown fields technology = 99, 15 (2 bytes), calls[0].16 (4
// bytes)": a number that its enumeration does not declare, and the sizes of others with their tags.
// The message may lack required fields. A message of another library has no text but a comment that
// says so.
//
// A parse that failed may leave half an unknown field in the message: there ends what this and the
// functions below read of it.
//
// Linear in the size of the message: about 100 ns for a Dial. It takes no memory but the text's,
// and 8 KiB of stack.
std::string ToText(const google::protobuf::MessageLite& message, const TextOptions& options = {});

// The same for bytes that never became a message: what can be read of them, in the order in which
// they stand, and after it, as a comment, the place where they break and why. type is a full type
// name; when there is none such, the text is a comment that says so.
//
// Masks go by the type named. Where bytes do not fit it (they break, lack a required field or have
// one of another wire type), they may be another type's: all strings and lists of numbers are
// masked then.
std::string ToText(std::string_view type, std::string_view bytes, const TextOptions& options = {});

// The required fields that the message lacks, at every depth, by their paths, such as
// "calls[1].number"; what InitializationErrorString() cannot tell. Empty when it is initialized,
// and for a message of another library.
std::vector<std::string> MissingFields(const google::protobuf::MessageLite& message);

// The encoded form of the message for a bug report: subscriber data masked, and of each unknown
// field its value, in as many bytes, X in strings and 0 in numbers; numbers that an enumeration
// does not declare stay. A parser finds in it what it finds in the message: the same fields,
// unknown and missing ones. Empty for a message of another library.
std::string MaskedBytes(const google::protobuf::MessageLite& message);

// The same for bytes that never became a message. Bytes that break do so at the same place and for
// the same reason when they are masked; each byte after it reads X. Bytes that do not fit the type
// are masked as in ToText(); an unknown type gives nothing.
std::string MaskedBytes(std::string_view type, std::string_view bytes);

}  // namespace virtual_modem

#pragma GCC visibility pop
