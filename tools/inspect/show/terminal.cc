#include "inspect/show/terminal.h"

#include "inspect/read/hex.h"

namespace virtual_modem::inspect {

bool ActsOnTerminal(std::uint32_t c) {
  return c < 0x20 || (c >= 0x7F && c <= 0x9F) || c == 0xAD || c == 0x61C ||
         (c >= 0x200B && c <= 0x200F) || (c >= 0x2028 && c <= 0x202E) ||
         (c >= 0x2060 && c <= 0x206F) || c == 0xFEFF || (c >= 0xFFF9 && c <= 0xFFFB) ||
         (c >= 0xE0000 && c <= 0xE007F);
}

std::uint32_t TakeUtf8(std::string_view text, std::size_t& size) {
  const auto byte = [&](std::size_t i) -> std::uint32_t {
    return i < text.size() ? static_cast<std::uint8_t>(text[i]) : 0U;
  };
  const std::uint32_t first = byte(0);
  std::uint32_t code = first;
  std::uint32_t least = 0;
  size = 1;
  if (first < 0x80) return code;
  if (first >= 0xC2 && first < 0xE0) {
    size = 2;
    code = first & 0x1FU;
    least = 0x80;
  } else if (first >= 0xE0 && first < 0xF0) {
    size = 3;
    code = first & 0x0FU;
    least = 0x800;
  } else if (first >= 0xF0 && first < 0xF5) {
    size = 4;
    code = first & 0x07U;
    least = 0x10000;
  }
  for (std::size_t i = 1; i < size; ++i) {
    if ((byte(i) & 0xC0U) != 0x80) {
      size = 0;
      return 0;
    }
    code = code << 6U | (byte(i) & 0x3FU);
  }
  if (size == 1 || code < least || code > 0x10FFFF || (code >= 0xD800 && code < 0xE000)) size = 0;
  return code;
}

std::string ForTerminal(std::string_view text) {
  std::string safe;
  while (!text.empty()) {
    std::size_t size = 0;
    const std::uint32_t code = TakeUtf8(text, size);
    const bool shown = size != 0 && !ActsOnTerminal(code);
    if (size == 0) size = 1;
    for (const char c : text.substr(0, size)) {
      if (shown) {
        safe += c;
      } else {
        safe += "\\x" + ToHex({&c, 1});
      }
    }
    text.remove_prefix(size);
  }
  return safe;
}

}  // namespace virtual_modem::inspect
