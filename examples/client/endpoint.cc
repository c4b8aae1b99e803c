#include "client/endpoint.h"

#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstring>
#include <string_view>
#include <utility>

namespace example {

using virtual_modem::FrameStatus;

Endpoint::Endpoint(int socket, Direction sends, std::chrono::milliseconds patience, Log& log)
    : socket_(socket),
      sends_(sends),
      receives_(sends == Direction::kToModem ? Direction::kToTelephony : Direction::kToModem),
      patience_(patience),
      log_(log),
      received_(virtual_modem::kFrameHeaderBytes + virtual_modem::kMaxTypeNameBytes + kMaxMessage,
                '\0') {
  int type = 0;
  socklen_t size = sizeof(type);
  getsockopt(socket, SOL_SOCKET, SO_TYPE, &type, &size);
  keeps_packets_ = type == SOCK_SEQPACKET;
}

Endpoint::~Endpoint() { close(socket_); }

bool Endpoint::Send(const MessageLite& message, Operation operation) {
  if (!connected()) return false;
  sent_.clear();
  virtual_modem::AppendFrame(message, static_cast<std::uint8_t>(operation), sent_);
  const auto read = virtual_modem::ReadFrame(sent_, kMaxMessage);
  if (read.status != FrameStatus::kFrame) {
    log_.Note("not sent: a frame of " + message.GetTypeName() + ' ' + Explain(read.status));
    return false;
  }
  log_.Passed(sends_, read.frame, &message);
  // A stream may take the bytes in pieces. MSG_NOSIGNAL: a peer that is gone is no SIGPIPE.
  for (std::string_view rest = sent_; !rest.empty() && connected();) {
    const ssize_t taken = send(socket_, rest.data(), rest.size(), MSG_NOSIGNAL | MSG_DONTWAIT);
    if (taken >= 0) {
      rest.remove_prefix(static_cast<std::size_t>(taken));
    } else if (errno != EAGAIN) {
      EndByError();
    } else if (!Await(POLLOUT, Clock::now() + patience_)) {
      End("the other side takes nothing");
    }
  }
  return connected();
}

std::optional<Endpoint::Received> Endpoint::Receive(Clock::time_point deadline) {
  do {
    while (const auto read = reader_.Next()) {
      if (read->status != FrameStatus::kFrame) {
        End(std::string("a frame ") + Explain(read->status));
        return std::nullopt;
      }
      const Frame& frame = read->frame;
      auto [type, message, whole] = virtual_modem::Parse(frame.type, frame.message);
      log_.Passed(receives_, frame, whole ? message.get() : nullptr);
      if (whole) {
        return Received{static_cast<Operation>(frame.operation), type, std::move(message)};
      }
      if (Clock::now() >= deadline) return std::nullopt;
    }
  } while (ReadMore(deadline));
  return std::nullopt;
}

// Gives the reader what arrives before the deadline; false if nothing does.
bool Endpoint::ReadMore(Clock::time_point deadline) {
  if (keeps_packets_ && !reader_.between_frames()) End("a packet ends within a frame");
  if (!connected() || !Await(POLLIN, deadline)) return false;
  const ssize_t size = recv(socket_, received_.data(), received_.size(), MSG_DONTWAIT);
  if (size > 0) {
    reader_.Add(std::string_view(received_).substr(0, static_cast<std::size_t>(size)));
  } else if (size < 0) {
    EndByError();
  } else {
    closed_ = reader_.between_frames();
    End(closed_ ? "the other side closed it" : "the other side closed it within a frame");
  }
  return connected();
}

// Whether the socket is ready before the deadline.
bool Endpoint::Await(short events, Clock::time_point deadline) const {
  for (;;) {
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(deadline - Clock::now()).count();
    pollfd entry{socket_, events, 0};
    const int ready =
        poll(&entry, 1, static_cast<int>(std::clamp<decltype(left)>(left, 0, INT_MAX)));
    if (ready >= 0 || errno != EINTR) return ready != 0;  // a signal: what is left still counts
  }
}

// After a call that set errno.
void Endpoint::EndByError() {
  if (errno == EINTR || errno == EAGAIN) return;  // to be tried again
  End(errno == EPIPE || errno == ECONNRESET ? "the other side closed it" : std::strerror(errno));
}

}  // namespace example
