// Writes the frames of an exchange as a capture that Wireshark and its kin read (libpcap format).
//
// Each frame is shown as a UDP datagram between two ports of the loopback address, although no
// network carries it: so every tool shows direction and time as they are, with no link type to
// configure, and the frame's dissector hangs on a port (tools/wireshark/virtual_modem.lua).
#pragma once

#include <cstdint>
#include <cstdio>
#include <memory>
#include <string>
#include <string_view>

#include "call_exchange/endpoint.h"

namespace virtual_modem::exchange {

inline constexpr std::uint16_t kTelephonyPort = 47601;
inline constexpr std::uint16_t kModemPort = 47602;

class PcapWriter {
 public:
  // Creates or truncates the file. Throws std::system_error, as Write() does.
  explicit PcapWriter(const std::string& path);

  // Adds one frame, seen from the telephony side. It is in the file when Write() returns.
  void Write(Direction direction, std::string_view frame);

 private:
  struct Close {
    void operator()(std::FILE* file) const { std::fclose(file); }
  };

  void Put(std::string_view bytes);

  std::string path_;
  std::unique_ptr<std::FILE, Close> file_;
};

}  // namespace virtual_modem::exchange
