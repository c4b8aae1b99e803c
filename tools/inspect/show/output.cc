#include "inspect/show/output.h"

#include <charconv>
#include <cstring>
#include <iterator>

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
  char digits[text::kMaxDigits];
  const char* end = std::to_chars(digits, std::end(digits), number).ptr;
  return Append({digits, static_cast<std::size_t>(end - digits)});
}

void Output::Flush() {
  const std::size_t size = used_;
  used_ = 0;
  if (before_ != nullptr) before_->Flush();
  stream_.write(buffer_.data(), static_cast<std::streamsize>(size));
  stream_.flush();
}

void Output::MakeRoom(std::size_t size) {
  Flush();
  if (size > buffer_.size()) buffer_.resize(size);
}

}  // namespace virtual_modem::inspect
