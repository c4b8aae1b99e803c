// Messages as text, for logs and for people: every message of the library prints itself, with
// subscriber data masked unless you ask for it. Part of libvirtual-modem-text; link
// VirtualModemProtos::text.
//
// The fields in proto/virtual_modem/subscriber_data.txt are masked: each byte of a string becomes
// X, each number 0. Unknown fields can hold anything, so their values are masked as well. What
// tells versions and errors apart is shown: numbers that an enumeration does not declare, the
// numbers and sizes of unknown fields, which fields are missing, where bytes break.
//
// Threads may use different messages at once, and share a message that none of them changes. Throws
// only if memory runs out; needs no RTTI.
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
  bool show_subscriber_data = false;  // and the content of unknown fields
  bool single_line = true;            // else one line per field, indented by two spaces per level
  // The largest size of the text in bytes, 0 for any. A longer text is cut and ends with how much
  // is missing, such as " [... 512 more bytes]"; that mark is never cut, even if it alone is
  // longer. The default fits a line of Android's log.
  std::size_t max_bytes = 4000;
};

// The message in protobuf's text format. If subscriber data is shown, the text is the same as the
// full runtime's: `virtual-modem-inspect encode` and `protoc --encode` read it back, unless it has
// unknown fields or was cut. Masked text can be parsed as well: a comment at its end names the
// unknown fields, such as "# unknown fields technology = 99, 15 (2 bytes), calls[0].16 (4 bytes)":
// a number that its enumeration does not declare, and the sizes of other fields with their tags.
// The message may lack required fields. For a message of another library the text is a comment that
// says so.
//
// A parse that failed may leave half an unknown field in the message: this and the functions below
// read the message only up to there.
//
// Linear in the size of the message: about 100 ns for a Dial. Allocates only the text, and takes 8
// KiB of stack.
std::string ToText(const google::protobuf::MessageLite& message, const TextOptions& options = {});

// The same for bytes that were not parsed: the fields that can be read, in the order of the bytes,
// then, as a comment, where the bytes break and why. type is a full type name; if it is unknown,
// the text is a comment that says so.
//
// Masking follows the given type. If bytes do not fit it (they break, lack a required field or have
// a field with a wrong wire type), they may be of another type: then all strings and lists of
// numbers are masked.
std::string ToText(std::string_view type, std::string_view bytes, const TextOptions& options = {});

// The paths of the required fields that the message lacks, at every depth, such as
// "calls[1].number"; InitializationErrorString() cannot name them. Empty if the message is
// initialized, and for a message of another library.
std::vector<std::string> MissingFields(const google::protobuf::MessageLite& message);

// The encoded form of the message for a bug report. Subscriber data and the values of unknown
// fields are masked, those in as many bytes, X in strings and 0 in numbers; numbers that an
// enumeration does not declare stay. A parser finds the same fields in it as in the message, and
// the same unknown and missing ones. Empty for a message of another library.
std::string MaskedBytes(const google::protobuf::MessageLite& message);

// The same for bytes that were not parsed. Bytes that break do so at the same place and for the
// same reason when they are masked; each byte after it becomes X. Bytes that do not fit the type
// are masked as in ToText(). Empty for an unknown type.
std::string MaskedBytes(std::string_view type, std::string_view bytes);

}  // namespace virtual_modem

#pragma GCC visibility pop
