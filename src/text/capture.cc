#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <virtual_modem/capture.h>
#include <virtual_modem/text.h>
#include <virtual_modem/types.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <mutex>

#include "text/walk.h"

namespace virtual_modem {
namespace {

using google::protobuf::MessageLite;

constexpr std::size_t kFileHeader = 24;
constexpr std::size_t kRecordHeader = 16;
constexpr std::size_t kIpHeader = 20;
constexpr std::size_t kUdpHeader = 8;
constexpr std::size_t kFrameHeader = 8;
constexpr std::size_t kMaxTypeName = 64;
constexpr std::size_t kMaxPacket = 65535;
static_assert(CaptureWriter::kMaxMessageBytes ==
              kMaxPacket - kIpHeader - kUdpHeader - kFrameHeader - kMaxTypeName);

constexpr std::uint32_t kMicroseconds = 0xA1B2C3D4;  // what such files begin with
constexpr std::uint32_t kRawIp = 101;  // link type: a packet begins with its IP header
constexpr std::uint16_t kTelephonyPort = 47601;
constexpr std::uint16_t kModemPort = 47602;

// Big-endian, as the network's headers are. These return where the number ends.
char* Put16(std::size_t value, char* to) {
  *to++ = static_cast<char>(value >> 8U);
  *to++ = static_cast<char>(value);
  return to;
}
char* Put32(std::size_t value, char* to) { return Put16(value & 0xFFFFU, Put16(value >> 16U, to)); }

// Little-endian, as the file's own headers are on every host.
char* PutFile32(std::uint32_t value, char* to) {
  for (unsigned shift = 0; shift < 32; shift += 8) *to++ = static_cast<char>(value >> shift);
  return to;
}

char* Put(std::string_view bytes, char* to) {
  std::memcpy(to, bytes.data(), bytes.size());
  return to + bytes.size();
}

std::uint32_t ReadFile32(const char* from) {
  std::uint32_t value = 0;
  for (unsigned i = 0; i < 4; ++i) {
    value |= static_cast<std::uint32_t>(static_cast<std::uint8_t>(from[i])) << (8 * i);
  }
  return value;
}

// kFileHeader bytes.
char* PutFileHeader(char* to) {
  to = PutFile32(kMicroseconds, to);
  to = PutFile32(4U << 16U | 2U, to);  // version 2.4
  to = PutFile32(0, to);
  to = PutFile32(0, to);
  to = PutFile32(kMaxPacket, to);
  return PutFile32(kRawIp, to);
}

// RFC 1071, over the IP header with its checksum field 0.
std::size_t Checksum(const char* header) {
  std::size_t sum = 0;
  for (std::size_t at = 0; at < kIpHeader; at += 2) {
    sum += static_cast<std::size_t>(static_cast<std::uint8_t>(header[at])) << 8U |
           static_cast<std::uint8_t>(header[at + 1]);
  }
  while (sum > 0xFFFF) sum = (sum & 0xFFFFU) + (sum >> 16U);
  return ~sum & 0xFFFFU;
}

// Appends the record of a message to what is to be written.
void AppendRecord(Direction direction, std::string_view type, std::string_view bytes,
                  std::uint8_t operation, std::string& out) {
  const std::size_t frame = kFrameHeader + type.size() + bytes.size();
  const std::size_t packet = kIpHeader + kUdpHeader + frame;
  timespec now{};
  clock_gettime(CLOCK_REALTIME, &now);

  const std::size_t before = out.size();
  out.resize(before + kRecordHeader + packet);
  char* at = &out[before];
  at = PutFile32(static_cast<std::uint32_t>(now.tv_sec), at);
  at = PutFile32(static_cast<std::uint32_t>(now.tv_nsec / 1000), at);
  at = PutFile32(static_cast<std::uint32_t>(packet), at);
  at = PutFile32(static_cast<std::uint32_t>(packet), at);

  char* ip = at;
  at = Put({"\x45\0", 2}, at);  // IPv4, 20 bytes of header; no service class
  at = Put16(packet, at);
  at = Put({"\0\0\0\0\x40\x11\0\0", 8}, at);  // not fragmented, 64 hops, UDP; checksum
  at = Put({"\x7f\0\0\1\x7f\0\0\1", 8}, at);  // from and to 127.0.0.1
  Put16(Checksum(ip), ip + 10);

  const bool to_modem = direction == Direction::kToModem;
  at = Put16(to_modem ? kTelephonyPort : kModemPort, at);
  at = Put16(to_modem ? kModemPort : kTelephonyPort, at);
  at = Put16(kUdpHeader + frame, at);
  at = Put16(0, at);  // no checksum, RFC 768

  at = Put("VM", at);
  *at++ = static_cast<char>(operation);
  *at++ = static_cast<char>(type.size());
  at = Put32(bytes.size(), at);
  at = Put(type, at);
  Put(bytes, at);
}

bool IsTypeCharacter(char c) {
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_' ||
         c == '.';
}

}  // namespace

// Whoever calls holds the mutex.
class CaptureWriter::File {
 public:
  ~File() { Close(); }

  bool Open(const std::string& path, const CaptureOptions& options) {
    Close();
    path_.resize(0);
    text::Append(path_, path);
    options_ = options;
    fd_ = open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600);
    if (fd_ < 0) return Fail(std::strerror(errno));
    if (Begin()) return true;
    Close();
    return false;
  }

  bool Write(Direction direction, std::string_view type, std::string_view bytes,
             std::uint8_t operation) {
    if (fd_ < 0) return Fail("no capture is open");
    if (type.empty() || type.size() > kMaxTypeName ||
        !std::all_of(type.begin(), type.end(), IsTypeCharacter)) {
      return Fail("not the name of a message type");
    }
    if (bytes.size() > kMaxMessageBytes) {
      std::string why;
      text::Append(why, "a ");
      text::Append(why, type);
      text::Append(why, " of ");
      text::AppendNumber(why, bytes.size());
      text::Append(why, " bytes is larger than a capture holds");
      return Fail(why);
    }
    const std::size_t size =
        kRecordHeader + kIpHeader + kUdpHeader + kFrameHeader + type.size() + bytes.size();
    const bool full = options_.max_bytes != 0 && size_ + size > options_.max_bytes;
    if (full && size_ > kFileHeader && !Rotate()) return false;
    std::string record;
    if (size_ == 0) {
      record.resize(kFileHeader);
      PutFileHeader(record.data());
    }
    AppendRecord(direction, type, bytes, operation, record);
    return Append(record);
  }

  void Close() {
    if (fd_ >= 0) close(fd_);
    fd_ = -1;
  }

  bool Fail(std::string_view why) {
    error_.resize(0);
    if (!path_.empty()) {
      text::Append(error_, path_);
      text::Append(error_, ": ");
    }
    text::Append(error_, why);
    return false;
  }

  bool shows_subscriber_data() const { return options_.show_subscriber_data; }
  const std::string& error() const { return error_; }

  std::mutex mutex;

 private:
  // Makes the open file one that records can be appended to.
  bool Begin() {
    size_ = 0;
    struct stat info {};
    if (fstat(fd_, &info) != 0) return Fail(std::strerror(errno));
    if (options_.append && info.st_size > 0) {
      return FindEnd(static_cast<std::uint64_t>(info.st_size));
    }
    if (info.st_size > 0 && ftruncate(fd_, 0) != 0) return Fail(std::strerror(errno));
    char header[kFileHeader];
    PutFileHeader(header);
    return Append({header, kFileHeader});
  }

  // Leaves in size_ where the last whole record of the capture ends, and ends the file there.
  bool FindEnd(std::uint64_t file_size) {
    char expected[kFileHeader];
    PutFileHeader(expected);
    char header[kFileHeader];
    if (pread(fd_, header, kFileHeader, 0) != static_cast<ssize_t>(kFileHeader) ||
        std::memcmp(header, expected, kFileHeader) != 0) {
      return Fail("is not a capture of this form; it is left as it is");
    }
    size_ = kFileHeader;
    while (pread(fd_, header, kRecordHeader, static_cast<off_t>(size_)) ==
           static_cast<ssize_t>(kRecordHeader)) {
      const std::uint32_t packet = ReadFile32(header + 8);
      if (packet > kMaxPacket || size_ + kRecordHeader + packet > file_size) break;
      size_ += kRecordHeader + packet;
    }
    if (size_ < file_size && ftruncate(fd_, static_cast<off_t>(size_)) != 0) {
      return Fail(std::strerror(errno));
    }
    error_.resize(0);
    return true;
  }

  // Leaves an empty file in the place of the full one, or all as it was.
  bool Rotate() {
    std::string old;
    text::Append(old, path_);
    text::Append(old, ".1");
    if (std::rename(path_.c_str(), old.c_str()) != 0) return Fail(std::strerror(errno));
    const int fd = open(path_.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, 0600);
    if (fd < 0) {
      const int why = errno;
      static_cast<void>(std::rename(old.c_str(), path_.c_str()));
      return Fail(std::strerror(why));
    }
    close(fd_);
    fd_ = fd;
    size_ = 0;
    return true;
  }

  // All or nothing: what a short write left is cut off, or overwritten by the next record.
  bool Append(std::string_view bytes) {
    ssize_t written = 0;
    do {
      written = pwrite(fd_, bytes.data(), bytes.size(), static_cast<off_t>(size_));
    } while (written < 0 && errno == EINTR);
    if (written == static_cast<ssize_t>(bytes.size())) {
      size_ += bytes.size();
      error_.resize(0);
      return true;
    }
    const int why = written < 0 ? errno : ENOSPC;
    static_cast<void>(!ftruncate(fd_, static_cast<off_t>(size_)));
    return Fail(std::strerror(why));
  }

  std::string path_;
  CaptureOptions options_;
  std::string error_;
  int fd_ = -1;
  std::uint64_t size_ = 0;  // of the file, in bytes
};

CaptureWriter::CaptureWriter() : file_(std::make_unique<File>()) {}
CaptureWriter::~CaptureWriter() = default;

bool CaptureWriter::Open(const std::string& path, const CaptureOptions& options) {
  const std::lock_guard<std::mutex> lock(file_->mutex);
  return file_->Open(path, options);
}

bool CaptureWriter::Write(Direction direction, const MessageLite& message, std::uint8_t operation) {
  const Type& type = TypeOf(message);
  const std::lock_guard<std::mutex> lock(file_->mutex);
  if (type.prototype == nullptr) return file_->Fail("a message of another library");
  const std::string bytes =
      file_->shows_subscriber_data() ? message.SerializePartialAsString() : MaskedBytes(message);
  return file_->Write(direction, type.name, bytes, operation);
}

bool CaptureWriter::Write(Direction direction, std::string_view type, std::string_view bytes,
                          std::uint8_t operation) {
  const std::lock_guard<std::mutex> lock(file_->mutex);
  if (file_->shows_subscriber_data()) return file_->Write(direction, type, bytes, operation);
  return file_->Write(direction, type, MaskedBytes(type, bytes), operation);
}

void CaptureWriter::Close() {
  const std::lock_guard<std::mutex> lock(file_->mutex);
  file_->Close();
}

std::string CaptureWriter::error() const {
  const std::lock_guard<std::mutex> lock(file_->mutex);
  const std::string& error = file_->error();
  return {error.data(), error.size()};
}

}  // namespace virtual_modem
