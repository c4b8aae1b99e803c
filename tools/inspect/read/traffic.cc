#include "inspect/read/traffic.h"

#include <array>

#include "inspect/read/capture.h"
#include "inspect/read/text_log.h"

namespace virtual_modem::inspect {

bool IsCapture(ByteStream& stream) {
  constexpr std::array<std::string_view, 5> kMagics{"\xA1\xB2\xC3\xD4", "\xD4\xC3\xB2\xA1",
                                                    "\xA1\xB2\x3C\x4D", "\x4D\x3C\xB2\xA1",
                                                    "\x0A\x0D\x0D\x0A"};
  const std::string_view begin = stream.Peek(4);
  for (const std::string_view magic : kMagics) {
    if (begin == magic) return true;
  }
  return false;
}

std::unique_ptr<Traffic> OpenTraffic(const Schema& schema, ByteStream& stream) {
  if (IsCapture(stream)) return std::make_unique<CaptureReader>(schema, stream);
  return std::make_unique<TextLogReader>(schema, stream);
}

std::int64_t NanosecondsSince1970(std::int64_t seconds, std::int64_t nanoseconds) {
  constexpr std::int64_t kSecond = 1'000'000'000;
  if (seconds < 0 || seconds >= INT64_MAX / kSecond) return kNoTime;
  return seconds * kSecond + nanoseconds;
}

}  // namespace virtual_modem::inspect
