// Strings on a stream, each after its size (4 bytes, little-endian): how the programs of the tests
// talk to the scripts that drive them.
#pragma once

#include <array>
#include <cstdint>
#include <istream>
#include <optional>
#include <ostream>
#include <string>

namespace virtual_modem::testing {

// Nothing at the end of the input.
inline std::optional<std::string> ReadSized(std::istream& in) {
  std::array<unsigned char, 4> size{};
  if (!in.read(reinterpret_cast<char*>(size.data()), size.size())) return std::nullopt;
  std::string bytes(size[0] | size[1] << 8 | size[2] << 16 | std::uint32_t{size[3]} << 24, '\0');
  if (!in.read(bytes.data(), static_cast<std::streamsize>(bytes.size()))) return std::nullopt;
  return bytes;
}

inline void WriteSized(std::ostream& out, const std::string& bytes) {
  for (int shift = 0; shift < 32; shift += 8) out.put(static_cast<char>(bytes.size() >> shift));
  out << bytes;
}

}  // namespace virtual_modem::testing
