// Fuzz target over the example's receiving side. Input: frames one after the other, each sent as a
// packet of its own to a modem that has just started; what does not begin with a sensible header is
// one packet to the end.
#include <sys/socket.h>
#include <unistd.h>
#include <virtual_modem/text.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>

#include "call_exchange/channel.h"
#include "call_exchange/endpoint.h"
#include "call_exchange/frame.h"
#include "call_exchange/modem/modem.h"
#include "check.h"

namespace virtual_modem::exchange {
namespace {

// Takes the next packet off the input.
std::string_view TakePacket(std::string_view* input) {
  std::size_t size = input->size();
  if (size >= kFrameHeaderSize && input->substr(0, 2) == "VM") {
    const auto byte = [input](std::size_t at) { return static_cast<std::uint8_t>((*input)[at]); };
    const std::size_t payload = byte(6) << 8U | byte(7);  // the upper bytes make it too large
    size = std::min(size, kFrameHeaderSize + byte(3) + payload);
  }
  const std::string_view packet = input->substr(0, size);
  input->remove_prefix(size);
  return packet;
}

// A frame that reads well lies inside its packet and is written back as it came.
void CheckFrame(std::string_view packet) {
  Frame frame;
  const FrameFault fault = ReadFrame(packet, frame);
  FUZZ_CHECK(!Explain(fault).empty(), "a fault has no explanation");
  if (fault != FrameFault::kNone) return;
  FUZZ_CHECK(frame.type.size() <= kMaxTypeLength && frame.payload.size() <= kMaxPayload, "size");
  std::array<std::uint8_t, kFrameHeaderSize + kMaxTypeLength> header{};
  const std::size_t size =
      WriteFrameHeader(frame.operation, frame.type, frame.payload.size(), header.data());
  FUZZ_CHECK(size + frame.payload.size() == packet.size(), "round trip");
  FUZZ_CHECK(std::memcmp(header.data(), packet.data(), size) == 0, "round trip");
  FUZZ_CHECK(frame.payload.data() == packet.data() + size, "payload");
}

class Peer {
 public:
  Peer() { FUZZ_CHECK(socketpair(AF_UNIX, SOCK_SEQPACKET, 0, fds_.data()) == 0, "socketpair"); }
  Peer(const Peer&) = delete;
  Peer& operator=(const Peer&) = delete;
  ~Peer() { close(fds_[1]); }

  int modem_end() const { return fds_[0]; }  // to be closed by the modem's channel

  void Send(std::string_view packet) const {
    FUZZ_CHECK(send(fds_[1], packet.data(), packet.size(), 0) >= 0, "send");
  }

  // Every answer is a frame with a message.
  void CheckAnswers() const {
    std::array<char, kMaxFrame> buffer{};
    for (;;) {
      const ssize_t size = recv(fds_[1], buffer.data(), buffer.size(), MSG_DONTWAIT);
      if (size <= 0) return;
      Frame frame;
      const std::string_view packet(buffer.data(), static_cast<std::size_t>(size));
      FUZZ_CHECK(ReadFrame(packet, frame) == FrameFault::kNone, "answer");
    }
  }

 private:
  std::array<int, 2> fds_{};
};

void Run(std::string_view input) {
  const Peer peer;
  Observer observer;
  observer.on_message = [](Direction, const Frame&, const MessageLite& message) {
    const std::string text = ToText(message);
    FUZZ_CHECK(std::all_of(text.begin(), text.end(), [](char c) { return c >= ' ' && c <= '~'; }),
               "a byte that does not print");
  };
  Endpoint endpoint(Channel(peer.modem_end(), std::chrono::milliseconds(1000)), observer);
  Modem modem(endpoint);
  while (!input.empty()) {
    const std::string_view packet = TakePacket(&input);
    CheckFrame(packet);
    peer.Send(packet);
    try {
      modem.ServeOne();
    } catch (const LinkError&) {
      return;  // the link is given up, as documented
    }
    peer.CheckAnswers();
  }
}

}  // namespace
}  // namespace virtual_modem::exchange

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size > virtual_modem::exchange::kMaxFrame) return -1;
  virtual_modem::exchange::Run({reinterpret_cast<const char*>(data), size});
  return 0;
}
