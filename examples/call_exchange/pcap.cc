#include "call_exchange/pcap.h"

#include <cerrno>
#include <chrono>
#include <system_error>

namespace virtual_modem::exchange {
namespace {

constexpr std::uint32_t kRawIp = 101;  // LINKTYPE_RAW: a packet begins with its IP header
constexpr std::size_t kIpHeader = 20;
constexpr std::size_t kUdpHeader = 8;

// Big-endian, as the network's headers are.
void Append16(std::string& to, std::size_t value) {
  to += static_cast<char>(value >> 8U);
  to += static_cast<char>(value);
}

// Little-endian, as this file's own headers are on every host.
void Append32(std::string& to, std::uint32_t value) {
  for (unsigned shift = 0; shift < 32; shift += 8) to += static_cast<char>(value >> shift);
}

// RFC 1071, over the header with its checksum field 0.
std::size_t Checksum(std::string_view header) {
  std::size_t sum = 0;
  for (std::size_t at = 0; at < header.size(); at += 2) {
    sum += static_cast<std::size_t>(static_cast<unsigned char>(header[at])) << 8U |
           static_cast<unsigned char>(header[at + 1]);
  }
  while (sum > 0xFFFF) sum = (sum & 0xFFFFU) + (sum >> 16U);
  return ~sum & 0xFFFFU;
}

std::string Headers(std::uint16_t from, std::uint16_t to, std::size_t size) {
  constexpr std::string_view kLoopback("\x7f\0\0\1", 4);
  std::string ip("\x45\0", 2);  // IPv4, 20 bytes of header; no service class
  Append16(ip, kIpHeader + kUdpHeader + size);
  ip.append("\0\0\0\0\x40\x11", 6);  // not fragmented, 64 hops, UDP
  std::string addresses(kLoopback);
  addresses += kLoopback;
  std::string zeroed = ip;
  zeroed.append(2, '\0');
  Append16(ip, Checksum(zeroed + addresses));
  ip += addresses;
  Append16(ip, from);
  Append16(ip, to);
  Append16(ip, kUdpHeader + size);
  Append16(ip, 0);  // no UDP checksum, RFC 768
  return ip;
}

}  // namespace

PcapWriter::PcapWriter(const std::string& path)
    : path_(path), file_(std::fopen(path.c_str(), "wbe")) {
  if (!file_) throw std::system_error(errno, std::generic_category(), path_);
  std::string header;
  Append32(header, 0xA1B2C3D4);      // microseconds
  Append32(header, 4U << 16U | 2U);  // version 2.4
  Append32(header, 0);
  Append32(header, 0);
  Append32(header, 65535);  // no packet is longer
  Append32(header, kRawIp);
  Put(header);
}

void PcapWriter::Write(Direction direction, std::string_view frame) {
  using std::chrono::microseconds;
  const auto now =
      std::chrono::duration_cast<microseconds>(std::chrono::system_clock::now().time_since_epoch());
  const bool sent = direction == Direction::kSent;
  const std::string headers =
      Headers(sent ? kTelephonyPort : kModemPort, sent ? kModemPort : kTelephonyPort, frame.size());
  const auto size = static_cast<std::uint32_t>(headers.size() + frame.size());
  std::string record;
  Append32(record, static_cast<std::uint32_t>(now.count() / 1'000'000));
  Append32(record, static_cast<std::uint32_t>(now.count() % 1'000'000));
  Append32(record, size);
  Append32(record, size);
  record += headers;
  record += frame;
  Put(record);
}

void PcapWriter::Put(std::string_view bytes) {
  if (std::fwrite(bytes.data(), 1, bytes.size(), file_.get()) != bytes.size() ||
      std::fflush(file_.get()) != 0) {
    throw std::system_error(errno, std::generic_category(), path_);
  }
}

}  // namespace virtual_modem::exchange
