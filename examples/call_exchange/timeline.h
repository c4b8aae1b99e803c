// The exchange for people, one line a message, and its capture.
#pragma once

#include <virtual_modem/capture.h>

#include <chrono>
#include <cstdio>
#include <optional>
#include <string>
#include <string_view>

#include "client/endpoint.h"

namespace example {

class Timeline : public Log {
 public:
  struct Options {
    bool color = false;
    bool show = false;  // subscriber data and unknown fields
    bool hex = false;   // each message is followed by its bytes, masked alike
    std::optional<std::string> pcap;
  };

  // Writes to `out`, which stays the caller's. Throws, as does Passed(), when the capture cannot be
  // written.
  Timeline(std::FILE* out, const Options& options);

  void Title(std::string_view scenario, std::string_view what);
  void Passed(Direction direction, const Frame& frame, const MessageLite* message) override;
  void Note(const std::string& text) override;
  // What went by, in all.
  void Total() const;

 private:
  const char* Color(const char* sequence) const { return options_.color ? sequence : ""; }

  std::FILE* out_;
  const Options options_;
  virtual_modem::CaptureWriter capture_;
  const Clock::time_point start_ = Clock::now();
  int messages_ = 0;
  std::size_t bytes_ = 0;
};

}  // namespace example
