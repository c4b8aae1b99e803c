// One side's end of the link in terms of messages: frames and serializes what is sent, checks and
// parses what arrives. Buffers and message objects are kept and reused, so a running exchange
// allocates next to nothing.
#pragma once

#include <google/protobuf/message_lite.h>

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "call_exchange/channel.h"
#include "call_exchange/frame.h"

namespace virtual_modem::exchange {

using google::protobuf::MessageLite;

enum class Direction { kSent, kReceived };

// Both called for each frame, `on_frame` first and also for one that is then refused.
struct Observer {
  std::function<void(Direction, std::string_view bytes)> on_frame;
  std::function<void(Direction, const Frame&, const MessageLite&)> on_message;
};

class Endpoint {
 public:
  explicit Endpoint(Channel channel, Observer observer = {});

  // A cleared M to fill and send: the same object each time, so its memory is reused.
  template <typename M>
  M& Draft() {
    M& message = static_cast<M&>(Reusable(drafts_, M::default_instance()));
    message.Clear();
    return message;
  }

  // Sends a message as it is, initialized or not: that is the caller's business.
  // Throws LinkError when it does not fit a frame or the channel fails.
  void Send(const MessageLite& message, Operation operation = Operation::kByType);

  struct Received {
    Frame frame;                 // valid until the next Receive()
    const MessageLite& message;  // valid until the next one of the same type arrives
  };

  // The next message; nothing when the peer has closed. It is parsed but may lack required fields:
  // ask IsInitialized(). Throws LinkError on a frame or payload that is malformed, on a type that
  // the library does not have, and when the channel fails.
  std::optional<Received> Receive();

 private:
  using Messages = std::unordered_map<const MessageLite*, std::unique_ptr<MessageLite>>;

  static MessageLite& Reusable(Messages& messages, const MessageLite& prototype);

  Channel channel_;
  Observer observer_;
  std::vector<std::uint8_t> send_buffer_;
  Messages drafts_;    // by default instance
  Messages received_;  // likewise
};

}  // namespace virtual_modem::exchange
