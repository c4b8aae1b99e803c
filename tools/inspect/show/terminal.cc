#include "inspect/show/terminal.h"

#include <google/protobuf/stubs/common.h>

#include <algorithm>

#include "inspect/read/hex.h"

namespace virtual_modem::inspect {

bool ActsOnTerminal(std::uint32_t c) {
  return c < 0x20 || (c >= 0x7F && c <= 0x9F) || c == 0xAD || c == 0x61C ||
         (c >= 0x200B && c <= 0x200F) || (c >= 0x2028 && c <= 0x202E) ||
         (c >= 0x2060 && c <= 0x206F) || c == 0xFEFF || (c >= 0xFFF9 && c <= 0xFFFB) ||
         (c >= 0xE0000 && c <= 0xE007F);
}

std::uint32_t TakeUtf8(std::string_view text, std::size_t& size) {
  using google::protobuf::internal::IsStructurallyValidUTF8;
  const std::size_t longest = std::min<std::size_t>(text.size(), 4);
  for (size = 1; size <= longest; ++size) {
    if (!IsStructurallyValidUTF8(text.data(), static_cast<int>(size))) continue;
    std::uint32_t code = 0;
    for (const char c : text.substr(0, size)) {
      code = code << 6U | (static_cast<std::uint8_t>(c) & 0x3FU);
    }
    // Beside its bits, the first byte tells the size.
    return size == 1 ? static_cast<std::uint8_t>(text[0]) : code & ((1U << (5 * size + 1)) - 1);
  }
  size = 0;
  return 0;
}

std::string ForTerminal(std::string_view text) {
  std::string safe;
  while (!text.empty()) {
    std::size_t size = 0;
    const std::uint32_t code = TakeUtf8(text, size);
    const bool shown = size != 0 && !ActsOnTerminal(code);
    if (size == 0) size = 1;
    if (shown) safe += text.substr(0, size);
    for (std::size_t i = 0; i < size && !shown; ++i) safe += "\\x" + ToHex(text.substr(i, 1));
    text.remove_prefix(size);
  }
  return safe;
}

}  // namespace virtual_modem::inspect
