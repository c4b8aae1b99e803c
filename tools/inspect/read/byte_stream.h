// The bytes of a file, a pipe or standard input in order, expanded if gzip compressed them.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <string_view>

struct z_stream_s;

namespace virtual_modem::inspect {

class ByteStream {
 public:
  // "-" is standard input. With follow, waits at the end of a file for more, until its path names
  // another file or it was truncated. Throws Error.
  explicit ByteStream(const std::string& path, bool follow = false);
  // The bytes themselves, which must outlive the stream.
  ByteStream(std::string_view bytes, std::string name);
  ~ByteStream();
  ByteStream(const ByteStream&) = delete;
  ByteStream& operator=(const ByteStream&) = delete;

  // Reads what is there, up to size bytes, and waits only when nothing is; 0 at the end. Throws
  // Error.
  std::size_t Read(char* to, std::size_t size);
  // The next bytes, at most 8, without taking them; fewer at the end.
  std::string_view Peek(std::size_t size);

  // The end that was read is that of a followed file; the path is to be opened again.
  bool moved() const { return moved_; }

  // Called before every wait.
  void BeforeWait(std::function<void()> call) { before_wait_ = std::move(call); }

  // The name for error messages.
  const std::string& name() const { return name_; }

 private:
  struct EndInflate {
    void operator()(z_stream_s* stream) const;
  };

  bool IsElsewhere() const;
  std::size_t ReadRaw(char* to, std::size_t size);
  std::size_t ReadExpanded(char* to, std::size_t size);

  std::string name_;
  int fd_ = -1;
  bool follow_ = false;
  bool regular_ = false;
  bool moved_ = false;
  std::string_view memory_;
  std::string ahead_;  // peeked at
  bool begun_ = false;
  std::unique_ptr<z_stream_s, EndInflate> inflate_;  // null when nothing is compressed
  std::string begin_;                                // the first compressed bytes
  std::string compressed_;                           // the next ones
  bool inside_ = false;                              // a member of gzip
  std::function<void()> before_wait_;
};

}  // namespace virtual_modem::inspect
