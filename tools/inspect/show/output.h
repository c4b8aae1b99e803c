// Standard output for much text, and the progress of a long job.
#pragma once

#include <chrono>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "inspect/read/byte_stream.h"
#include "text/print.h"

namespace virtual_modem::inspect {

// Text is in std::cout when Flush() returns or the object is gone; a failure to write shows there.
class Output {
 public:
  Output() = default;
  Output(const Output&) = delete;
  Output& operator=(const Output&) = delete;
  ~Output();

  Output& Append(std::string_view text);
  Output& Append(std::int64_t number);
  void Flush();

  // print(sink) writes the text of a message; it is called again when its text did not fit. A text
  // that keep(result) does not want is dropped. Returns what print returns.
  template <typename Print, typename Keep>
  auto Append(const Print& print, const Keep& keep) {
    for (;;) {
      text::Sink sink(buffer_.data() + used_, buffer_.size() - used_);
      const auto result = print(sink);
      if (sink.lost() == 0) {
        if (keep(result)) used_ += sink.text().size();
        return result;
      }
      MakeRoom(sink.text().size() + sink.lost());
    }
  }

 private:
  void MakeRoom(std::size_t size);

  std::vector<char> buffer_ = std::vector<char>(1U << 17U);
  std::size_t used_ = 0;
};

// The progress of reading a stream, on standard error if that is a terminal and standard output is
// not, after the first second.
class Progress {
 public:
  explicit Progress(const ByteStream& stream);
  Progress(const Progress&) = delete;
  Progress& operator=(const Progress&) = delete;
  ~Progress();

  // To be called often.
  void Show() {
    if (terminal_ && stream_.position() >= next_look_) Look();
  }

 private:
  void Look();

  const ByteStream& stream_;
  const bool terminal_;
  std::chrono::steady_clock::time_point next_;
  std::int64_t next_look_ = 0;
  bool shown_ = false;
};

}  // namespace virtual_modem::inspect
