#include "inspect/show/output.h"

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

void Output::AppendError(std::string_view text) {
  errors_ += text;
  if (errors_.size() > buffer_.size()) Flush();
}

void Output::Flush() {
  const std::size_t size = used_;
  used_ = 0;
  std::cout.write(buffer_.data(), static_cast<std::streamsize>(size));
  std::cout.flush();
  std::cerr << errors_;
  errors_.clear();
}

void Output::MakeRoom(std::size_t size) {
  Flush();
  if (size > buffer_.size()) buffer_.resize(size);
}

}  // namespace virtual_modem::inspect
