// Times of messages in words.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "inspect/read/recording.h"

namespace virtual_modem::inspect {

class Clock {
 public:
  // "11-21 18:07:01.123456", local time, as Android's log has it; a log's own time as it is. Valid
  // until the next call.
  std::string_view Local(const Record& record);
  // "2026-11-21T18:07:01.123456Z" in quotes; a log's own time as it is, null when there is none.
  static std::string Json(const Record& record);

 private:
  std::int64_t minute_ = -1;
  std::string prefix_;
  std::string text_;
};

// "127.000", of nanoseconds.
std::string Milliseconds(std::int64_t nanoseconds);

}  // namespace virtual_modem::inspect
