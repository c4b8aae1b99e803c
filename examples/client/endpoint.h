// One end of a connection: sends messages in frames, and reads messages from the frames received.
// The socket is a stream, or keeps packets (SOCK_SEQPACKET), each of whole frames.
#pragma once

#include <google/protobuf/message_lite.h>
#include <virtual_modem/frame.h>
#include <virtual_modem/types.h>

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>

namespace example {

using google::protobuf::MessageLite;
using virtual_modem::Direction;
using virtual_modem::Frame;
using virtual_modem::Type;
using Clock = std::chrono::steady_clock;

inline constexpr std::size_t kMaxMessage = 32768;  // bytes; bounds what a peer can make us spend

// What a message asks for if its type does not say; the two sides agree on the numbers.
enum class Operation : std::uint8_t {
  kByType = 0,
  kRegistration = 1,       // NoParmRequest, answered by RegistrationResponse
  kOperator = 2,           // NoParmRequest, answered by OperatorResponse
  kCurrentCalls = 3,       // NoParmRequest, answered by GetCurrentCallsResponse
  kCallStateChanged = 4,   // NoResultIndication
  kLastCallFailCause = 5,  // NoParmRequest, answered by LastCallFailureCauseResponse
  kCardStatus = 6,         // NoParmRequest, answered by IccCardStatusResponse
  kSignalStrength = 7,     // NoParmRequest, answered by GetSignalStrengthResponse
  kImsCall = 8,            // Dial and Hangup, for a call over IMS
  kConference = 9,         // NoParmRequest: merge the IMS calls; answered by NoResultResponse
};

// Sees every message sent or received.
class Log {
 public:
  virtual ~Log() = default;
  // The message is null if the frame's type is unknown or its bytes do not parse.
  virtual void Passed(Direction direction, const Frame& frame, const MessageLite* message) = 0;
  // A remark on the last message.
  virtual void Note(const std::string& text) = 0;
};

class Endpoint {
 public:
  // Takes over the connected socket. `sends` is the direction of this side's messages; the other
  // side has `patience` to read what is sent.
  Endpoint(int socket, Direction sends, std::chrono::milliseconds patience, Log& log);
  ~Endpoint();
  Endpoint(const Endpoint&) = delete;
  Endpoint& operator=(const Endpoint&) = delete;

  // Sends the message, which may lack required fields. False when it is larger than kMaxMessage or
  // the connection is lost.
  bool Send(const MessageLite& message, Operation operation = Operation::kByType);

  struct Received {
    Operation operation;
    const Type* type;
    std::unique_ptr<MessageLite> message;  // may lack required fields
  };

  // The next message of a known type that parses; others are logged and skipped. Nothing if none
  // arrives before the deadline, or the connection is lost.
  std::optional<Received> Receive(Clock::time_point deadline);

  bool connected() const { return why_ended_.empty(); }
  const std::string& why_ended() const { return why_ended_; }  // empty while connected
  // The other side has ended the connection, and not within a frame.
  bool closed() const { return closed_; }

 private:
  bool Await(short events, Clock::time_point deadline) const;
  bool ReadMore(Clock::time_point deadline);
  void End(const std::string& why) { why_ended_ = why; }
  void EndByError();

  const int socket_;
  const Direction sends_;
  const Direction receives_;
  const std::chrono::milliseconds patience_;
  Log& log_;
  bool keeps_packets_ = false;
  std::string why_ended_;
  bool closed_ = false;
  std::string sent_;      // reused, as is
  std::string received_;  // this
  virtual_modem::FrameReader reader_{kMaxMessage};
};

}  // namespace example
