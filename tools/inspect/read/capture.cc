#include <netinet/ip.h>
#include <netinet/udp.h>
#include <pcap/pcap.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <map>
#include <memory>

#include "inspect/error.h"
#include "inspect/read/recording.h"

namespace virtual_modem::inspect {
namespace {

using capture::kModemPort;
using capture::kTelephonyPort;

// Bytes before the IP header.
std::size_t LinkHeader(pcap* capture, const std::string& name) {
  static const std::map<int, std::size_t> sizes{
      {DLT_RAW, 0},     {DLT_IPV4, 0},       {DLT_NULL, 4},       {DLT_LOOP, 4},
      {DLT_EN10MB, 14}, {DLT_LINUX_SLL, 16}, {DLT_LINUX_SLL2, 20}};
  const auto found = sizes.find(pcap_datalink(capture));
  if (found != sizes.end()) return found->second;
  const char* link = pcap_datalink_val_to_name(pcap_datalink(capture));
  throw Error(name + ": a capture of link type " + (link == nullptr ? "unknown" : link) +
              ", which does not carry the messages' datagrams");
}

// What a packet carries if it is a UDP datagram between the two sides, and which way it goes; false
// for other packets and for fragments.
bool ReadDatagram(std::string_view packet, Direction& direction, std::string_view& payload) {
  ip ip_header{};
  udphdr udp_header{};
  if (packet.size() < sizeof ip_header) return false;
  std::memcpy(&ip_header, packet.data(), sizeof ip_header);
  const std::size_t at = std::size_t{4} * ip_header.ip_hl;
  if (ip_header.ip_v != 4 || at < sizeof ip_header || packet.size() < at + sizeof udp_header ||
      ip_header.ip_p != IPPROTO_UDP || (ntohs(ip_header.ip_off) & (IP_MF | IP_OFFMASK)) != 0) {
    return false;
  }
  std::memcpy(&udp_header, packet.data() + at, sizeof udp_header);
  const std::uint16_t from = ntohs(udp_header.source);
  const std::uint16_t to = ntohs(udp_header.dest);
  const std::size_t length = ntohs(udp_header.len);
  const bool to_modem = from == kTelephonyPort && to == kModemPort;
  const bool to_telephony = from == kModemPort && to == kTelephonyPort;
  if (length < sizeof udp_header || (!to_modem && !to_telephony)) return false;
  direction = to_modem ? Direction::kToModem : Direction::kToTelephony;
  payload = packet.substr(at + sizeof udp_header, length - sizeof udp_header);
  return true;
}

// Reads a frame, of which lost bytes were not kept. The record tells what is wrong with it.
void ReadFrame(const Schema& schema, std::string_view frame, std::size_t lost, Record& record) {
  const std::string cut = "the capture keeps " + std::to_string(frame.size()) + " of the frame's " +
                          std::to_string(frame.size() + lost) + " bytes";
  // A bound of 0 has name and size told though the message is not all there.
  const FrameRead read = virtual_modem::ReadFrame(frame, 0);
  if (frame.size() < kFrameHeaderBytes || read.status == FrameStatus::kNotAFrame) {
    record.problem = frame.size() < kFrameHeaderBytes && lost > 0 ? cut : "not a frame";
    return;
  }
  record.operation = static_cast<std::uint8_t>(frame[2]);
  if (read.status == FrameStatus::kBadType) {
    record.problem = "a frame without the name of a type";
    return;
  }
  if (read.frame.type.empty()) {
    record.problem = lost > 0 ? cut : "a frame that ends within the name of its type";
    return;
  }
  record.name = read.frame.type;
  const std::size_t name_size = record.name.size();
  const auto size = static_cast<std::size_t>(read.size) - kFrameHeaderBytes - name_size;
  record.type = schema.FindType(record.name);
  record.bytes = frame.substr(kFrameHeaderBytes + name_size);
  if (record.bytes.size() < size) {
    record.problem = lost > 0 ? cut
                              : "the frame announces " + std::to_string(size) + " bytes and has " +
                                    std::to_string(record.bytes.size());
  } else if (record.bytes.size() > size) {
    record.problem = std::to_string(record.bytes.size() - size) + " bytes after the frame";
    record.bytes = record.bytes.substr(0, size);
  }
}

class CaptureReader : public Traffic {
 public:
  CaptureReader(const Schema& schema, ByteStream& stream) : schema_(schema), stream_(stream) {
    cookie_io_functions_t functions{};
    functions.read = ReadCookie;
    std::FILE* file = fopencookie(this, "rb", functions);
    if (file == nullptr) throw Error(stream.name() + ": " + std::strerror(errno));
    std::setvbuf(file, nullptr, _IOFBF, 1U << 17U);
    char why[PCAP_ERRBUF_SIZE] = "";
    capture_.reset(pcap_fopen_offline_with_tstamp_precision(file, PCAP_TSTAMP_PRECISION_NANO, why));
    if (capture_ == nullptr) {
      std::fclose(file);
      Fail(why);
    }
    link_header_ = LinkHeader(capture_.get(), stream.name());
  }

  bool Next(Record& record) override {
    for (;;) {
      pcap_pkthdr* header = nullptr;
      const u_char* data = nullptr;
      const int result = pcap_next_ex(capture_.get(), &header, &data);
      if (result == PCAP_ERROR_BREAK && stream_error_.empty()) return false;
      if (result != 1) {
        Fail("broken after packet " + std::to_string(number_) + ": " + pcap_geterr(capture_.get()));
      }
      ++number_;
      std::string_view packet(reinterpret_cast<const char*>(data), header->caplen);
      packet.remove_prefix(std::min(link_header_, packet.size()));
      const std::size_t lost = header->len > header->caplen ? header->len - header->caplen : 0;
      std::string_view frame;
      record = Record();
      if (!ReadDatagram(packet, record.direction, frame)) {
        ++foreign_;
        continue;
      }
      ReadFrame(schema_, frame, lost, record);
      record.number = number_;
      std::int64_t seconds = header->ts.tv_sec;
      // Seconds of pcap have 32 bits, which libpcap takes for signed ones.
      if (pcap_major_version(capture_.get()) == PCAP_VERSION_MAJOR) {
        seconds = static_cast<std::uint32_t>(seconds);
      }
      record.time = NanosecondsSince1970(seconds, header->ts.tv_usec);
      record.time_text = record.time == kNoTime ? "-" : "";
      return true;
    }
  }

  std::string PassedOver() const override {
    if (foreign_ == 0) return "";
    return "packets between other ports: " + std::to_string(foreign_);
  }

 private:
  // Called from C, through which nothing may be thrown.
  static ssize_t ReadCookie(void* cookie, char* to, std::size_t size) {
    auto& reader = *static_cast<CaptureReader*>(cookie);
    try {
      return reader.stream_.Read(to, static_cast<int>(size));
    } catch (const std::exception& error) {
      reader.stream_error_ = error.what();
      errno = EIO;
      return -1;
    }
  }

  [[noreturn]] void Fail(const std::string& why) const {
    throw Error(stream_error_.empty() ? stream_.name() + ": " + why : stream_error_);
  }

  const Schema& schema_;
  ByteStream& stream_;
  std::string stream_error_;
  std::unique_ptr<pcap, decltype(&pcap_close)> capture_{nullptr, pcap_close};
  std::size_t link_header_ = 0;
  std::int64_t number_ = 0;
  std::int64_t foreign_ = 0;
};

}  // namespace

std::optional<capture::Resolution> ResolutionOf(ByteStream& stream) {
  const std::string_view begin = stream.Peek(4);
  for (const std::string_view magic : {"\xA1\xB2\xC3\xD4", "\xD4\xC3\xB2\xA1"}) {
    if (begin == magic) return capture::Resolution::kMicroseconds;
  }
  for (const std::string_view magic :
       {"\xA1\xB2\x3C\x4D", "\x4D\x3C\xB2\xA1", "\x0A\x0D\x0D\x0A"}) {  // the last is pcapng's
    if (begin == magic) return capture::Resolution::kNanoseconds;
  }
  return std::nullopt;
}

std::unique_ptr<Traffic> ReadCapture(const Schema& schema, ByteStream& stream) {
  return std::make_unique<CaptureReader>(schema, stream);
}

void AppendRecord(const Record& record, std::string_view bytes, capture::Resolution resolution,
                  const std::string& file, std::string& out) {
  const std::int64_t known = std::max<std::int64_t>(record.time, 0);  // 0 for kNoTime
  std::timespec time{};
  time.tv_sec = static_cast<std::time_t>(known / 1'000'000'000);
  time.tv_nsec = static_cast<long>(known % 1'000'000'000);
  if (!capture::AppendRecord(time, resolution, record.direction,
                             {static_cast<std::uint8_t>(record.operation), record.name, bytes},
                             out)) {
    throw Error(file + ": a message of " + std::to_string(bytes.size()) +
                " bytes does not fit a datagram");
  }
}

}  // namespace virtual_modem::inspect
