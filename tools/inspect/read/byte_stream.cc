#include "inspect/read/byte_stream.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <zlib.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstring>
#include <thread>

#include "inspect/error.h"
#include "inspect/read/input.h"

namespace virtual_modem::inspect {

ByteStream::ByteStream(const std::string& path, bool follow)
    : name_(DisplayName(path)), follow_(follow) {
  fd_ = path == "-" ? STDIN_FILENO : open(path.c_str(), O_RDONLY | O_CLOEXEC);
  if (fd_ < 0) throw Error(path + ": " + std::strerror(errno));
  struct stat info {};
  regular_ = fstat(fd_, &info) == 0 && S_ISREG(info.st_mode);
}

ByteStream::~ByteStream() {
  if (fd_ > STDERR_FILENO) close(fd_);
}

int ByteStream::Read(void* to, int size) {
  if (!begun_) Peek(2);
  const auto room = static_cast<std::size_t>(size);
  if (ahead_.empty()) return static_cast<int>(ReadExpanded(to, room));
  const std::size_t count = ahead_.copy(static_cast<char*>(to), room);
  ahead_.erase(0, count);
  return static_cast<int>(count);
}

bool ByteStream::AppendTo(std::string& bytes) {
  constexpr int kBlock = 1 << 16;
  const std::size_t old = bytes.size();
  bytes.resize(old + kBlock);
  const int count = Read(&bytes[old], kBlock);
  bytes.resize(old + static_cast<std::size_t>(count));
  return count != 0;
}

std::string_view ByteStream::Peek(std::size_t size) {
  char block[8];
  const auto fill = [&](std::size_t wanted) {
    while (ahead_.size() < wanted) {
      const std::size_t count = ReadExpanded(block, wanted - ahead_.size());
      if (count == 0) break;
      ahead_.append(block, count);
    }
  };
  if (!begun_) {
    begun_ = true;
    fill(2);
    if (ahead_ == "\x1F\x8B") {
      inflate_.reset(new z_stream{}, [](z_stream* stream) {
        inflateEnd(stream);
        delete stream;
      });
      if (inflateInit2(inflate_.get(), 16 + MAX_WBITS) != Z_OK) throw Error("zlib does not start");
      compressed_.swap(ahead_);
      inflate_->next_in = reinterpret_cast<Bytef*>(compressed_.data());
      inflate_->avail_in = static_cast<uInt>(compressed_.size());
    }
  }
  fill(size);
  return ahead_;
}

// A file may have several members of gzip, as a compressed log that was appended to has them.
std::size_t ByteStream::ReadExpanded(void* to, std::size_t size) {
  if (!inflate_) return ReadRaw(to, size);
  inflate_->next_out = static_cast<Bytef*>(to);
  inflate_->avail_out = static_cast<uInt>(std::min<std::size_t>(size, 1U << 30U));
  const uInt room = inflate_->avail_out;
  while (inflate_->avail_out == room) {
    if (inflate_->avail_in == 0) {
      compressed_.resize(1U << 16U);
      inflate_->avail_in = static_cast<uInt>(ReadRaw(compressed_.data(), compressed_.size()));
      inflate_->next_in = reinterpret_cast<Bytef*>(compressed_.data());
      if (inflate_->avail_in == 0) {
        if (!inside_) return 0;
        throw Error(name_ + ": the gzip file is cut");
      }
    }
    if (!inside_) inflateReset(inflate_.get());
    const int result = inflate(inflate_.get(), Z_NO_FLUSH);
    if (result != Z_OK && result != Z_BUF_ERROR && result != Z_STREAM_END) {
      throw Error(name_ + ": the gzip file is broken");
    }
    inside_ = result != Z_STREAM_END;
  }
  return room - inflate_->avail_out;
}

bool ByteStream::IsElsewhere() const {
  struct stat there {};
  struct stat here {};
  // For a moment there may be no file of that name: its writer is about to create it.
  if (stat(name_.c_str(), &there) != 0 || fstat(fd_, &here) != 0) return false;
  return there.st_ino != here.st_ino || there.st_dev != here.st_dev ||
         there.st_size < lseek(fd_, 0, SEEK_CUR);
}

std::size_t ByteStream::ReadRaw(void* to, std::size_t size) {
  if (!regular_ && before_wait_) before_wait_();
  for (;;) {
    const ssize_t count = read(fd_, to, size);
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) throw Error(name_ + ": " + std::strerror(errno));
    if (count > 0 || !follow_ || !regular_ || moved_) return static_cast<std::size_t>(count);
    moved_ = IsElsewhere();
    if (moved_) continue;  // what was written before it was moved is still to be read
    if (before_wait_) before_wait_();
    std::this_thread::sleep_for(std::chrono::milliseconds(100));
  }
}

}  // namespace virtual_modem::inspect
