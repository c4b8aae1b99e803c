// Captures and logs, one after another as one recording.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "inspect/read/capture.h"

namespace virtual_modem::inspect {

class Recording {
 public:
  // Opens all files; "-" is standard input. With follow, waits at the end of the last one for more,
  // and if its path then names another file, reads that one next. before_wait is
  // called before each wait. Throws Error.
  Recording(const Schema& schema, const std::vector<std::string>& files, bool follow = false,
            std::function<void()> before_wait = nullptr);

  // What the record refers to is valid until the next call. False at the end. Throws Error.
  bool Next(Record& record);

  // The finest form of the files, kNoCapture when one is none. To be called before Next().
  CaptureForm Form();

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

}  // namespace virtual_modem::inspect
