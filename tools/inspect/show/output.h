// Standard output and standard error for much text.
#pragma once

#include <cstdint>
#include <iostream>
#include <string_view>
#include <vector>

#include "text/print.h"

namespace virtual_modem::inspect {

// Text is in the stream when Flush() returns or the object is gone; a failure to write shows there.
class Output {
 public:
  // What before holds is flushed before the text: standard error says something of what it shows.
  explicit Output(std::ostream& stream = std::cout, Output* before = nullptr)
      : stream_(stream), before_(before) {}
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
  std::ostream& stream_;
  Output* const before_;
};

}  // namespace virtual_modem::inspect
