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

// Big-endian, as the network's headers are.
void Append16(std::string& to, std::size_t value) {
  to += static_cast<char>(value >> 8U);
  to += static_cast<char>(value);
}
void Append32(std::string& to, std::size_t value) {
  Append16(to, value >> 16U);
  Append16(to, value & 0xFFFFU);
}

// Little-endian, as the file's own headers are on every host.
void AppendFile32(std::string& to, std::uint32_t value) {
  for (unsigned shift = 0; shift < 32; shift += 8) to += static_cast<char>(value >> shift);
}

std::uint32_t ReadFile32(const char* from) {
  std::uint32_t value = 0;
  for (unsigned i = 0; i < 4; ++i) {
    value |= static_cast<std::uint32_t>(static_cast<std::uint8_t>(from[i])) << (8 * i);
  }
  return value;
}

std::string FileHeader() {
  std::string header;
  AppendFile32(header, kMicroseconds);
  AppendFile32(header, 4U << 16U | 2U);  // version 2.4
  AppendFile32(header, 0);
  AppendFile32(header, 0);
  AppendFile32(header, kMaxPacket);
  AppendFile32(header, kRawIp);
  return header;
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

std::string Record(Direction direction, std::string_view type, std::string_view bytes,
                   std::uint8_t operation) {
  const std::size_t frame = kFrameHeader + type.size() + bytes.size();
  const std::size_t packet = kIpHeader + kUdpHeader + frame;
  timespec now{};
  clock_gettime(CLOCK_REALTIME, &now);

  std::string record;
  record.reserve(kRecordHeader + packet);
  AppendFile32(record, static_cast<std::uint32_t>(now.tv_sec));
  AppendFile32(record, static_cast<std::uint32_t>(now.tv_nsec / 1000));
  AppendFile32(record, static_cast<std::uint32_t>(packet));
  AppendFile32(record, static_cast<std::uint32_t>(packet));

  record.append("\x45\0", 2);  // IPv4, 20 bytes of header; no service class
  Append16(record, packet);
  record.append("\0\0\0\0\x40\x11\0\0", 8);  // not fragmented, 64 hops, UDP; checksum
  record.append("\x7f\0\0\1\x7f\0\0\1", 8);  // from and to 127.0.0.1
  const std::size_t sum = Checksum(&record[kRecordHeader]);
  record[kRecordHeader + 10] = static_cast<char>(sum >> 8U);
  record[kRecordHeader + 11] = static_cast<char>(sum);

  const bool to_modem = direction == Direction::kToModem;
  Append16(record, to_modem ? kTelephonyPort : kModemPort);
  Append16(record, to_modem ? kModemPort : kTelephonyPort);
  Append16(record, kUdpHeader + frame);
  Append16(record, 0);  // no checksum, RFC 768

  record += "VM";
  record += static_cast<char>(operation);
  record += static_cast<char>(type.size());
  Append32(record, bytes.size());
  record.append(type);
  record.append(bytes);
  return record;
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
    path_ = path;
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
      return Fail("a " + std::string(type) + " of " + std::to_string(bytes.size()) +
                  " bytes is larger than a capture holds");
    }
    std::string record = Record(direction, type, bytes, operation);
    const bool full = options_.max_bytes != 0 && size_ + record.size() > options_.max_bytes;
    if (full && size_ > kFileHeader && !Rotate()) return false;
    if (size_ == 0) record.insert(0, FileHeader());
    return Append(record);
  }

  void Close() {
    if (fd_ >= 0) close(fd_);
    fd_ = -1;
  }

  bool Fail(const std::string& why) {
    error_ = path_.empty() ? why : path_ + ": " + why;
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
    return Append(FileHeader());
  }

  // Leaves in size_ where the last whole record of the capture ends, and ends the file there.
  bool FindEnd(std::uint64_t file_size) {
    const std::string expected = FileHeader();
    char header[kFileHeader];
    if (pread(fd_, header, kFileHeader, 0) != static_cast<ssize_t>(kFileHeader) ||
        std::memcmp(header, expected.data(), kFileHeader) != 0) {
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
    error_.clear();
    return true;
  }

  // Leaves an empty file in the place of the full one, or all as it was.
  bool Rotate() {
    const std::string old = path_ + ".1";
    if (std::rename(path_.c_str(), old.c_str()) != 0) {
      return Fail(old + ": " + std::strerror(errno));
    }
    const int fd = open(path_.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, 0600);
    if (fd < 0) {
      const std::string why = std::strerror(errno);
      static_cast<void>(std::rename(old.c_str(), path_.c_str()));
      return Fail(why);
    }
    close(fd_);
    fd_ = fd;
    size_ = 0;
    return true;
  }

  // All or nothing: what a short write left is cut off, or overwritten by the next record.
  bool Append(const std::string& bytes) {
    ssize_t written = 0;
    do {
      written = pwrite(fd_, bytes.data(), bytes.size(), static_cast<off_t>(size_));
    } while (written < 0 && errno == EINTR);
    if (written == static_cast<ssize_t>(bytes.size())) {
      size_ += bytes.size();
      error_.clear();
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
  return file_->error();
}

}  // namespace virtual_modem
