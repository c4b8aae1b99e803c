// Standard output for much text, and what standard error says of it.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "text/print.h"

namespace virtual_modem::inspect {

// Text is in std::cout when Flush() returns or the object is gone; a failure to write shows there.
// What is for standard error follows it.
class Output {
 public:
  Output() = default;
  Output(const Output&) = delete;
  Output& operator=(const Output&) = delete;
  ~Output();

  Output& Append(std::string_view text);
  Output& Append(std::int64_t number);
  void AppendError(std::string_view text);
  void AppendError(std::int64_t number) { AppendError(std::to_string(number)); }
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
  std::string errors_;
};

}  // namespace virtual_modem::inspect
