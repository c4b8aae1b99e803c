#include "capture/file.h"

namespace virtual_modem::capture {
namespace {

constexpr std::uint32_t kRawIp = 101;  // link type: a packet begins with its IP header

// Big-endian, as the network's headers are. Returns where the number ends.
char* Put16(std::size_t value, char* to) {
  *to++ = static_cast<char>(value >> 8U);
  *to++ = static_cast<char>(value);
  return to;
}

// Little-endian, as the file's own headers are on every host.
char* PutFile32(std::size_t value, char* to) {
  for (unsigned shift = 0; shift < 32; shift += 8) *to++ = static_cast<char>(value >> shift);
  return to;
}

// RFC 1071, over the IP header with its checksum field 0.
std::size_t Checksum(const char* header) {
  std::size_t sum = 0;
  for (std::size_t at = 0; at < kIpHeaderBytes; at += 2) {
    sum += static_cast<std::size_t>(static_cast<std::uint8_t>(header[at])) << 8U |
           static_cast<std::uint8_t>(header[at + 1]);
  }
  while (sum > 0xFFFF) sum = (sum & 0xFFFFU) + (sum >> 16U);
  return ~sum & 0xFFFFU;
}

}  // namespace

void AppendFileHeader(Resolution resolution, std::string& out) {
  char header[kFileHeaderBytes] = {};
  PutFile32(resolution == Resolution::kNanoseconds ? 0xA1B23C4D : 0xA1B2C3D4, header);
  PutFile32(4U << 16U | 2U, header + 4);  // version 2.4
  PutFile32(kMaxPacketBytes, header + 16);
  PutFile32(kRawIp, header + 20);
  out.append(header, sizeof header);
}

bool AppendRecord(const std::timespec& time, Resolution resolution, Direction direction,
                  const Frame& frame, std::string& out) {
  if (frame.message.size() > kMaxMessageBytes) return false;
  constexpr std::size_t kHeaders = kRecordHeaderBytes + kIpHeaderBytes + kUdpHeaderBytes;
  const std::size_t begin = out.size();
  out.resize(begin + kHeaders);
  if (!AppendFrame(frame, out)) {
    out.resize(begin);
    return false;
  }
  const std::size_t packet = out.size() - begin - kRecordHeaderBytes;
  const bool nanoseconds = resolution == Resolution::kNanoseconds;

  char* at = PutFile32(static_cast<std::size_t>(time.tv_sec), &out[begin]);
  at = PutFile32(static_cast<std::size_t>(time.tv_nsec / (nanoseconds ? 1 : 1000)), at);
  at = PutFile32(packet, at);
  at = PutFile32(packet, at);

  char* ip = at;
  at = Put16(0x4500, at);  // IPv4, 20 bytes of header; no service class
  at = Put16(packet, at);
  at += 4;                       // not fragmented
  at = Put16(0x4011, at);        // 64 hops, UDP
  at += 2;                       // checksum
  for (int i = 0; i < 2; ++i) {  // from and to 127.0.0.1
    at = Put16(0x0001, Put16(0x7F00, at));
  }
  Put16(Checksum(ip), ip + 10);

  const bool to_modem = direction == Direction::kToModem;
  at = Put16(to_modem ? kTelephonyPort : kModemPort, at);
  at = Put16(to_modem ? kModemPort : kTelephonyPort, at);
  Put16(packet - kIpHeaderBytes, at);  // and no checksum, RFC 768
  return true;
}

}  // namespace virtual_modem::capture
