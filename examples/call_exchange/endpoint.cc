#include "call_exchange/endpoint.h"

#include <virtual_modem/types.h>

#include <string>
#include <utility>

namespace virtual_modem::exchange {

Endpoint::Endpoint(Channel channel, Observer observer)
    : channel_(std::move(channel)), observer_(std::move(observer)), send_buffer_(kMaxFrame) {}

MessageLite& Endpoint::Reusable(Messages& messages, const MessageLite& prototype) {
  std::unique_ptr<MessageLite>& message = messages[&prototype];
  if (!message) message.reset(prototype.New());
  return *message;
}

void Endpoint::Send(const MessageLite& message, Operation operation) {
  const std::string type = message.GetTypeName();
  const std::size_t size = message.ByteSizeLong();  // caches the sizes used below
  if (size > kMaxPayload) {
    throw LinkError("a " + type + " of " + std::to_string(size) + " bytes does not fit a frame");
  }
  const std::size_t start = WriteFrameHeader(operation, type, size, send_buffer_.data());
  message.SerializeWithCachedSizesToArray(send_buffer_.data() + start);
  channel_.Send(send_buffer_.data(), start + size);

  const std::string_view bytes(reinterpret_cast<const char*>(send_buffer_.data()), start + size);
  if (observer_.on_frame) observer_.on_frame(Direction::kSent, bytes);
  if (observer_.on_message) {
    observer_.on_message(Direction::kSent, {operation, type, bytes.substr(start)}, message);
  }
}

std::optional<Endpoint::Received> Endpoint::Receive() {
  const auto bytes = channel_.Receive();
  if (!bytes) return std::nullopt;
  if (observer_.on_frame) observer_.on_frame(Direction::kReceived, *bytes);

  Frame frame;
  if (const FrameFault fault = ReadFrame(*bytes, frame); fault != FrameFault::kNone) {
    throw LinkError("the frame " + std::string(Explain(fault)));
  }
  const Type* type = FindType(frame.type);
  if (type == nullptr) {
    throw LinkError("the frame names the unknown type '" + std::string(frame.type) + "'");
  }
  MessageLite& message = Reusable(received_, *type->prototype);
  // Partially: the full parse would write a line to stderr for each message that lacks a required
  // field, and such a message can still be answered.
  if (!message.ParsePartialFromArray(frame.payload.data(),
                                     static_cast<int>(frame.payload.size()))) {
    throw LinkError("the payload is not a valid " + std::string(frame.type));
  }
  if (observer_.on_message) observer_.on_message(Direction::kReceived, frame, message);
  return Received{frame, message};
}

}  // namespace virtual_modem::exchange
