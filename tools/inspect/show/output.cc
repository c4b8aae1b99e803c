#include "inspect/show/output.h"

#include <unistd.h>

#include <array>
#include <charconv>
#include <cstring>
#include <iostream>

namespace virtual_modem::inspect {

Output::~Output() {
  try {
    Flush();
  } catch (const std::ios_base::failure&) {
    // The stream remembers that it failed, until the program ends.
  }
}

Output& Output::Append(std::string_view text) {
  if (text.size() > buffer_.size() - used_) MakeRoom(text.size());
  std::memcpy(buffer_.data() + used_, text.data(), text.size());
  used_ += text.size();
  return *this;
}

Output& Output::Append(std::int64_t number) {
  std::array<char, 20> digits;
  const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), number).ptr;
  return Append({digits.data(), static_cast<std::size_t>(end - digits.data())});
}

void Output::Flush() {
  const std::size_t size = used_;
  used_ = 0;
  std::cout.write(buffer_.data(), static_cast<std::streamsize>(size));
  std::cout.flush();
}

void Output::MakeRoom(std::size_t size) {
  Flush();
  if (size > buffer_.size()) buffer_.resize(size);
}

Progress::Progress(const ByteStream& stream)
    : stream_(stream),
      terminal_(isatty(STDERR_FILENO) != 0 && isatty(STDOUT_FILENO) == 0),
      next_(std::chrono::steady_clock::now() + std::chrono::seconds(1)) {}

Progress::~Progress() {
  if (shown_) std::cerr << "\r\033[K";
}

void Progress::Look() {
  next_look_ = stream_.position() + (1 << 20);
  const auto now = std::chrono::steady_clock::now();
  if (now < next_) return;
  next_ = now + std::chrono::milliseconds(200);
  std::cerr << '\r' << stream_.position() / 1'000'000 << " MB";
  if (stream_.size() > 0) std::cerr << ", " << stream_.position() * 100 / stream_.size() << " %";
  std::cerr << "\033[K" << std::flush;
  shown_ = true;
}

}  // namespace virtual_modem::inspect
