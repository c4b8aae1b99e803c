#include "call_exchange/frame.h"

#include <algorithm>

namespace virtual_modem::exchange {
namespace {

bool IsTypeCharacter(char c) {
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_' ||
         c == '.';
}

}  // namespace

std::string_view OperationName(Operation operation) {
  switch (operation) {
    case Operation::kByType:
      return "";
    case Operation::kRegistration:
      return "registration";
    case Operation::kOperator:
      return "operator";
    case Operation::kCurrentCalls:
      return "current calls";
    case Operation::kCallStateChanged:
      return "call state changed";
    case Operation::kLastCallFailCause:
      return "last call failure cause";
    case Operation::kCardStatus:
      return "card status";
    case Operation::kSignalStrength:
      return "signal strength";
    case Operation::kImsCall:
      return "IMS call";
    case Operation::kConference:
      return "merge into a conference";
  }
  return "";
}

std::string_view Explain(FrameFault fault) {
  switch (fault) {
    case FrameFault::kNone:
      return "is sound";
    case FrameFault::kTruncated:
      return "is cut short";
    case FrameFault::kNotAFrame:
      return "does not begin with 'VM'";
    case FrameFault::kBadType:
      return "has no valid type name";
    case FrameFault::kTooLarge:
      return "is larger than allowed";
    case FrameFault::kTrailing:
      return "has bytes after its payload";
  }
  return "";
}

FrameFault ReadFrame(std::string_view bytes, Frame& frame) {
  if (bytes.size() < kFrameHeaderSize) return FrameFault::kTruncated;
  if (bytes.substr(0, 2) != "VM") return FrameFault::kNotAFrame;
  const auto byte = [bytes](std::size_t at) { return static_cast<std::uint8_t>(bytes[at]); };
  const std::size_t type_size = byte(3);
  if (type_size == 0 || type_size > kMaxTypeLength) return FrameFault::kBadType;
  std::size_t payload_size = 0;
  for (std::size_t at = 4; at < kFrameHeaderSize; ++at) {
    payload_size = payload_size << 8U | byte(at);
  }
  if (payload_size > kMaxPayload) return FrameFault::kTooLarge;
  const std::size_t size = kFrameHeaderSize + type_size + payload_size;
  if (bytes.size() < size) return FrameFault::kTruncated;
  if (bytes.size() > size) return FrameFault::kTrailing;

  frame.operation = static_cast<Operation>(byte(2));
  frame.type = bytes.substr(kFrameHeaderSize, type_size);
  frame.payload = bytes.substr(kFrameHeaderSize + type_size);
  return std::all_of(frame.type.begin(), frame.type.end(), IsTypeCharacter) ? FrameFault::kNone
                                                                            : FrameFault::kBadType;
}

std::size_t WriteFrameHeader(Operation operation, std::string_view type, std::size_t payload_size,
                             std::uint8_t* out) {
  out[0] = 'V';
  out[1] = 'M';
  out[2] = static_cast<std::uint8_t>(operation);
  out[3] = static_cast<std::uint8_t>(type.size());
  for (std::size_t at = 4; at < kFrameHeaderSize; ++at) {
    out[at] = static_cast<std::uint8_t>(payload_size >> (8U * (7 - at)));
  }
  std::copy(type.begin(), type.end(), out + kFrameHeaderSize);
  return kFrameHeaderSize + type.size();
}

}  // namespace virtual_modem::exchange
