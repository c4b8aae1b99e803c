#include <endian.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <virtual_modem/capture.h>
#include <virtual_modem/text.h>
#include <virtual_modem/types.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <mutex>

#include "capture/file.h"
#include "text/walk.h"

namespace virtual_modem {
namespace {

using google::protobuf::MessageLite;

using capture::kFileHeaderBytes;
using capture::kRecordHeaderBytes;

static_assert(CaptureWriter::kMaxMessageBytes == capture::kMaxMessageBytes);

std::string FileHeader() {
  std::string header;
  capture::AppendFileHeader(capture::Resolution::kMicroseconds, header);
  return header;
}

}  // namespace

// The caller holds the mutex.
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
    std::timespec now{};
    clock_gettime(CLOCK_REALTIME, &now);
    std::string record = FileHeader();
    if (!capture::AppendRecord(now, capture::Resolution::kMicroseconds, direction,
                               {operation, type, bytes}, record)) {
      std::string why;
      if (!AppendFrame({operation, type, {}}, why)) return Fail("not the name of a message type");
      why.resize(0);
      text::Append(why, "a ", type, " of ", bytes.size(), " bytes is larger than a capture holds");
      return Fail(why);
    }
    const std::size_t size = record.size() - kFileHeaderBytes;
    const bool full = options_.max_bytes != 0 && size_ + size > options_.max_bytes;
    if (full && size_ > kFileHeaderBytes && !Rotate()) return false;
    return Append(size_ == 0 ? record : std::string_view(&record[kFileHeaderBytes], size));
  }

  void Close() {
    if (fd_ >= 0) close(fd_);
    fd_ = -1;
  }

  bool Fail(std::string_view why) {
    error_.resize(0);
    text::Append(error_, path_, path_.empty() ? "" : ": ", why);
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
    char header[kFileHeaderBytes];
    if (pread(fd_, header, kFileHeaderBytes, 0) != static_cast<ssize_t>(kFileHeaderBytes) ||
        std::memcmp(header, FileHeader().data(), kFileHeaderBytes) != 0) {
      return Fail("is not a capture of this form; it is left as it is");
    }
    size_ = kFileHeaderBytes;
    while (pread(fd_, header, kRecordHeaderBytes, static_cast<off_t>(size_)) ==
           static_cast<ssize_t>(kRecordHeaderBytes)) {
      std::uint32_t packet = 0;
      std::memcpy(&packet, header + 8, sizeof packet);
      packet = le32toh(packet);
      if (packet > capture::kMaxPacketBytes || size_ + kRecordHeaderBytes + packet > file_size)
        break;
      size_ += kRecordHeaderBytes + packet;
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
    text::Append(old, path_, ".1");
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
