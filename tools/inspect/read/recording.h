// Messages with their time, direction and type: what captures and logs hold, one after another as
// one recording.
#pragma once

#include <virtual_modem/frame.h>

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "capture/file.h"
#include "inspect/read/byte_stream.h"
#include "inspect/schema/schema.h"

namespace virtual_modem::inspect {

constexpr std::int64_t kNoTime = -1;

// kNoTime for what nanoseconds in 64 bits cannot count, and for a fraction that is not one.
constexpr std::int64_t NanosecondsSince1970(std::int64_t seconds, std::int64_t nanoseconds) {
  constexpr std::int64_t kSecond = 1'000'000'000;
  if (seconds < 0 || seconds >= INT64_MAX / kSecond) return kNoTime;
  if (nanoseconds < 0 || nanoseconds >= kSecond) return kNoTime;
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

// The messages of one file.
class Traffic {
 public:
  virtual ~Traffic() = default;
  // False at the end. Throws Error.
  virtual bool Next(Record& record) = 0;
  // What was passed over, and how much of it; empty for nothing.
  virtual std::string PassedOver() const = 0;
};

// The resolution of the times in a capture, by its first bytes; nothing when it is none.
std::optional<capture::Resolution> ResolutionOf(ByteStream& stream);

// A capture of the messages' frames, read by libpcap; docs/captures.md describes the format. Schema
// and stream must outlive what is returned.
std::unique_ptr<Traffic> ReadCapture(const Schema& schema, ByteStream& stream);

// A log with one message a line: the name of its type, then its bytes in hex or its text. Such
// lines are written by this program, by callers of ToText() and by people, with anything around.
std::unique_ptr<Traffic> ReadLog(const Schema& schema, ByteStream& stream);

class Recording {
 public:
  // Opens all files; "-" is standard input. With follow, waits at the end of the last one for more,
  // and if its path then names another file, reads that one next. before_wait is
  // called before each wait. Throws Error.
  Recording(const Schema& schema, const std::vector<std::string>& files, bool follow = false,
            std::function<void()> before_wait = nullptr);

  // What the record refers to is valid until the next call. False at the end. Throws Error.
  bool Next(Record& record);

  // The finest resolution of the files; nothing when one is no capture. To be called before Next().
  std::optional<capture::Resolution> Resolution();

  // The name for error messages.
  std::string names() const;
  // Throws Error when there was no message, with the hint at its end.
  void RequireMessages(const std::string& hint = "") const;
  // Says on standard error what was passed over, in these words.
  void NotePassedOver(const std::string& words = "passed over") const;

 private:
  void Open(const std::string& file, bool follow);

  const Schema& schema_;
  const std::function<void()> before_wait_;
  std::vector<std::unique_ptr<ByteStream>> streams_;
  std::size_t at_ = 0;
  std::unique_ptr<Traffic> traffic_;
  std::int64_t messages_ = 0;
  std::vector<std::pair<std::string, std::string>> passed_over_;  // by name of the file
};

// Appends a record to what goes into a capture; a record without a type keeps its name. Throws
// Error that names the file when the message is too large.
void AppendRecord(const Record& record, std::string_view bytes, capture::Resolution resolution,
                  const std::string& file, std::string& out);

}  // namespace virtual_modem::inspect
