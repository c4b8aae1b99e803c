#include "call_exchange/channel.h"

#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <string>
#include <system_error>

#include "call_exchange/frame.h"

namespace virtual_modem::exchange {
namespace {

using std::chrono::milliseconds;
using std::chrono::steady_clock;

LinkError Failure(const char* what) {
  if (errno == EPIPE || errno == ECONNRESET) return LinkError("the peer is gone");
  return LinkError(std::string(what) + ": " + std::generic_category().message(errno));
}

}  // namespace

Channel::Channel(int fd, milliseconds timeout) : fd_(fd), timeout_(timeout), buffer_(kMaxFrame) {}

Channel::Channel(Channel&& other) noexcept
    : fd_(std::exchange(other.fd_, -1)),
      timeout_(other.timeout_),
      buffer_(std::move(other.buffer_)) {}

Channel::~Channel() {
  if (fd_ >= 0) close(fd_);
}

std::pair<Channel, Channel> Channel::Pair(milliseconds timeout) {
  std::array<int, 2> fds{};
  if (socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC | SOCK_NONBLOCK, 0, fds.data()) != 0) {
    throw std::system_error(errno, std::generic_category(), "socketpair");
  }
  return {Channel(fds[0], timeout), Channel(fds[1], timeout)};
}

void Channel::Wait(short events, const char* what) const {
  const auto deadline = steady_clock::now() + timeout_;
  for (;;) {
    const auto left = std::chrono::ceil<milliseconds>(deadline - steady_clock::now());
    pollfd entry{fd_, events, 0};
    const int ready = left.count() < 0 ? 0 : poll(&entry, 1, static_cast<int>(left.count()));
    if (ready > 0) return;
    if (ready == 0) {
      throw LinkError("the peer " + std::string(what) + " within " +
                      std::to_string(timeout_.count()) + " ms");
    }
    if (errno != EINTR) throw Failure("poll");  // a signal: what is left of the time still counts
  }
}

void Channel::Send(const std::uint8_t* data, std::size_t size) {
  // MSG_NOSIGNAL: a peer that is gone is an error to report, not a SIGPIPE.
  while (send(fd_, data, size, MSG_NOSIGNAL) < 0) {
    if (errno != EAGAIN) throw Failure("send");
    Wait(POLLOUT, "took nothing");
  }
}

std::optional<std::string_view> Channel::Receive() {
  for (;;) {
    // MSG_TRUNC: the packet's own size, even when it does not fit.
    const ssize_t size = recv(fd_, buffer_.data(), buffer_.size(), MSG_TRUNC);
    if (size == 0) return std::nullopt;
    if (size > static_cast<ssize_t>(buffer_.size())) {
      throw LinkError("a packet of " + std::to_string(size) + " bytes is larger than allowed");
    }
    if (size > 0) {
      return std::string_view(reinterpret_cast<const char*>(buffer_.data()),
                              static_cast<std::size_t>(size));
    }
    if (errno != EAGAIN) throw Failure("recv");
    Wait(POLLIN, "sent nothing");
  }
}

}  // namespace virtual_modem::exchange
