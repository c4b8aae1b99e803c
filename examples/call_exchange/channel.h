// The example's channel: one end of a Unix seqpacket socket, which keeps packet boundaries, with a
// bound on every wait. Another project would put its own channel here.
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <stdexcept>
#include <string_view>
#include <utility>
#include <vector>

namespace virtual_modem::exchange {

// The other side is lost, or sent what must not be: the exchange cannot go on.
class LinkError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

class Channel {
 public:
  // Takes over `fd`, which must not block. `timeout` bounds each Send() and each Receive().
  Channel(int fd, std::chrono::milliseconds timeout);
  Channel(Channel&& other) noexcept;
  Channel(const Channel&) = delete;
  Channel& operator=(const Channel&) = delete;
  Channel& operator=(Channel&&) = delete;
  ~Channel();

  // Two joined channels. Throws std::system_error.
  static std::pair<Channel, Channel> Pair(std::chrono::milliseconds timeout);

  // Sends one packet. Throws LinkError when the peer is gone or takes nothing in time.
  void Send(const std::uint8_t* data, std::size_t size);

  // The next packet, valid until the next call; nothing when the peer has closed its end (an empty
  // packet reads the same). Throws LinkError on a packet above kMaxFrame, or when none comes in
  // time.
  std::optional<std::string_view> Receive();

 private:
  void Wait(short events, const char* what) const;

  int fd_;
  std::chrono::milliseconds timeout_;
  std::vector<std::uint8_t> buffer_;
};

}  // namespace virtual_modem::exchange
