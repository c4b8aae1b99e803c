// The frame in which the example sends one message: lite messages do not carry their own type on
// the wire, so the channel has to. The library leaves this to its callers; a frame like this one is
// all it takes.
//
//   offset  size  content
//   0       2     'V' 'M'
//   2       1     operation, see Operation
//   3       1     N, length of the type name, 1 to 64
//   4       4     P, length of the payload in bytes, big-endian, at most 32768
//   8       N     type name as GetTypeName() returns it, such as "Dial"
//   8+N     P     the serialized message
//
// The channel keeps packet boundaries: one packet is one frame, with nothing before or after it.
//
// To fuzz the reader, feed any bytes to ReadFrame(): it is a pure function of them, allocates
// nothing, and on success `type` and `payload` lie inside the bytes. Link the CMake target
// virtual-modem-exchange (or compile frame.cc alone, it needs nothing else).
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace virtual_modem::exchange {

// What a message asks for where its type does not say: every request without parameters is a
// NoParmRequest. Numbers are the wire's; a receiver may meet ones that it does not know.
enum class Operation : std::uint8_t {
  kByType = 0,  // the message type says it all
  kRegistration = 1,
  kOperator = 2,
  kCurrentCalls = 3,
  kCallStateChanged = 4,  // indication
  kLastCallFailCause = 5,
  kCardStatus = 6,
  kSignalStrength = 7,
  kImsCall = 8,     // with Dial: over IMS rather than circuit-switched
  kConference = 9,  // merge the IMS calls
};

// The operation in words, empty for kByType and for a number that is not declared.
std::string_view OperationName(Operation operation);

inline constexpr std::size_t kFrameHeaderSize = 8;
inline constexpr std::size_t kMaxTypeLength = 64;
inline constexpr std::size_t kMaxPayload = 32768;
inline constexpr std::size_t kMaxFrame = kFrameHeaderSize + kMaxTypeLength + kMaxPayload;

struct Frame {
  Operation operation = Operation::kByType;
  std::string_view type;
  std::string_view payload;
};

enum class FrameFault {
  kNone,
  kTruncated,  // shorter than its header, or than its header says
  kNotAFrame,  // does not begin with 'V' 'M'
  kBadType,    // type name empty, too long, or with a character that no type name has
  kTooLarge,   // payload longer than kMaxPayload
  kTrailing,   // bytes after the payload
};

// What is wrong, as the end of a sentence that begins with "the frame".
std::string_view Explain(FrameFault fault);

// Reads one packet. `frame` refers into `bytes`; it is unspecified unless kNone is returned.
FrameFault ReadFrame(std::string_view bytes, Frame& frame);

// Writes everything that precedes the payload to `out` and returns its size, at most
// kFrameHeaderSize + kMaxTypeLength. The caller appends the payload.
// Requires 1 <= type.size() <= kMaxTypeLength and payload_size <= kMaxPayload.
std::size_t WriteFrameHeader(Operation operation, std::string_view type, std::size_t payload_size,
                             std::uint8_t* out);

}  // namespace virtual_modem::exchange
