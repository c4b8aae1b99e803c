// The bytes of a file, a pipe or standard input in order, expanded if gzip compressed them.
#pragma once

#include <google/protobuf/io/zero_copy_stream_impl_lite.h>

#include <functional>
#include <memory>
#include <string>
#include <string_view>

struct z_stream_s;

namespace virtual_modem::inspect {

class ByteStream : public google::protobuf::io::CopyingInputStream {
 public:
  // "-" is standard input. With follow, waits at the end of a file for more, until its path names
  // another file or it was truncated. Throws Error.
  explicit ByteStream(const std::string& path, bool follow = false);
  ~ByteStream() override;
  ByteStream(const ByteStream&) = delete;
  ByteStream& operator=(const ByteStream&) = delete;

  // Reads what is there, up to size bytes, and waits only when nothing is; 0 at the end. Throws
  // Error.
  int Read(void* to, int size) override;
  // Appends what is there, and waits only when nothing is; false at the end. Throws Error.
  bool AppendTo(std::string& bytes);
  // The next bytes, at most 8, without taking them; fewer at the end.
  std::string_view Peek(std::size_t size);

  // The end that was read is that of a followed file; the path is to be opened again.
  bool moved() const { return moved_; }

  // Called before every wait.
  void BeforeWait(std::function<void()> call) { before_wait_ = std::move(call); }

  // The name for error messages.
  const std::string& name() const { return name_; }

 private:
  bool IsElsewhere() const;
  std::size_t ReadRaw(void* to, std::size_t size);
  std::size_t ReadExpanded(void* to, std::size_t size);

  std::string name_;
  int fd_ = -1;
  bool follow_ = false;
  bool regular_ = false;
  bool moved_ = false;
  std::string ahead_;  // peeked at
  bool begun_ = false;
  std::shared_ptr<z_stream_s> inflate_;  // null when nothing is compressed
  std::string compressed_;
  bool inside_ = false;  // a member of gzip
  std::function<void()> before_wait_;
};

}  // namespace virtual_modem::inspect
