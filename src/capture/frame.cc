#include <virtual_modem/frame.h>

#include <algorithm>

namespace virtual_modem {
namespace {

bool IsTypeName(std::string_view name) {
  return std::all_of(name.begin(), name.end(), [](char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_' ||
           c == '.';
  });
}

}  // namespace

bool AppendFrame(const Frame& frame, std::string& out) {
  const std::size_t name = frame.type.size();
  const std::uint64_t size = frame.message.size();
  if (name == 0 || name > kMaxTypeNameBytes || !IsTypeName(frame.type) || size >> 32U != 0) {
    return false;
  }
  char header[kFrameHeaderBytes] = {'V', 'M', static_cast<char>(frame.operation),
                                    static_cast<char>(name)};
  for (unsigned at = 4; at < kFrameHeaderBytes; ++at) {
    header[at] = static_cast<char>(size >> (8 * (7 - at)));
  }
  out.append(header, kFrameHeaderBytes);
  out.append(frame.type.data(), name);
  out.append(frame.message.data(), frame.message.size());
  return true;
}

FrameRead ReadFrame(std::string_view bytes, std::size_t max_message) {
  FrameRead read;
  if ((!bytes.empty() && bytes[0] != 'V') || (bytes.size() > 1 && bytes[1] != 'M')) {
    read.status = FrameStatus::kNotAFrame;
    return read;
  }
  read.size = kFrameHeaderBytes;
  if (bytes.size() < 4) return read;
  const auto byte = [bytes](std::size_t at) { return static_cast<std::uint8_t>(bytes[at]); };
  const std::size_t name_size = byte(3);
  std::string_view name;
  if (bytes.size() > kFrameHeaderBytes) {
    name = {bytes.data() + kFrameHeaderBytes,
            std::min(name_size, bytes.size() - kFrameHeaderBytes)};
  }
  if (name_size == 0 || name_size > kMaxTypeNameBytes || !IsTypeName(name)) {
    read.status = FrameStatus::kBadType;
    read.size = 0;
    return read;
  }
  if (bytes.size() < kFrameHeaderBytes) return read;
  std::uint64_t size = 0;
  for (unsigned at = 4; at < kFrameHeaderBytes; ++at) size = size << 8U | byte(at);
  read.size = kFrameHeaderBytes + name_size + size;
  if (size <= max_message && bytes.size() < read.size) return read;
  read.status = size <= max_message ? FrameStatus::kFrame : FrameStatus::kTooLarge;
  read.frame.operation = byte(2);
  if (name.size() == name_size) read.frame.type = name;
  if (size <= max_message) {
    read.frame.message = {name.data() + name_size, static_cast<std::size_t>(size)};
  }
  return read;
}

}  // namespace virtual_modem
