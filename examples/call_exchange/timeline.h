// The exchange as a person reads it: one line a message.
#pragma once

#include <google/protobuf/message_lite.h>

#include <chrono>
#include <cstdio>
#include <string_view>

#include "call_exchange/endpoint.h"

namespace virtual_modem::exchange {

class Timeline {
 public:
  struct Options {
    bool color = false;
    bool show = false;  // subscriber data and unknown fields
    bool hex = false;   // each message is followed by its bytes, masked alike
  };

  // Writes to `out`, which stays the caller's.
  Timeline(std::FILE* out, Options options) : out_(out), options_(options) {}

  void Title(std::string_view scenario, std::string_view what);
  void Message(Direction direction, const Frame& frame, const MessageLite& message);
  // A remark on the message above it.
  void Note(std::string_view text) const;
  // What went by, in all.
  void Total() const;

 private:
  const char* Color(const char* sequence) const { return options_.color ? sequence : ""; }

  std::FILE* out_;
  Options options_;
  std::chrono::steady_clock::time_point start_ = std::chrono::steady_clock::now();
  int messages_ = 0;
  std::size_t bytes_ = 0;
};

}  // namespace virtual_modem::exchange
