// Messages with their time, direction and type: what captures and logs hold.
#pragma once

#include <virtual_modem/frame.h>

#include <cstdint>
#include <string>
#include <string_view>

#include "inspect/read/byte_stream.h"
#include "inspect/schema/schema.h"

namespace virtual_modem::inspect {

constexpr std::int64_t kNoTime = -1;

// kNoTime for what nanoseconds in 64 bits cannot count.
constexpr std::int64_t NanosecondsSince1970(std::int64_t seconds, std::int64_t nanoseconds) {
  constexpr std::int64_t kSecond = 1'000'000'000;
  if (seconds < 0 || seconds >= INT64_MAX / kSecond) return kNoTime;
  return seconds * kSecond + nanoseconds;
}

// One message. What it refers to is valid until the next one is read.
struct Record {
  std::int64_t number = 0;     // of the packet or line, from 1
  std::int64_t time = 0;       // nanoseconds since 1970, or as far as a log tells, or kNoTime
  std::string_view time_text;  // as a log writes it, "-" for kNoTime; empty in captures
  Direction direction = Direction::kToModem;
  unsigned operation = 0;  // of the frame, 0 when the log does not tell
  std::string_view name;   // of the type; not to be trusted when type is null
  const TypeInfo* type = nullptr;
  std::string_view bytes;
  std::string problem;  // why the message is not whole, empty when it is
};

class Traffic {
 public:
  virtual ~Traffic() = default;
  // False at the end. Throws Error.
  virtual bool Next(Record& record) = 0;
  // What was passed over, and how much of it; empty for nothing.
  virtual std::string PassedOver() const = 0;
};

}  // namespace virtual_modem::inspect
