#include "call_exchange/timeline.h"

#include <virtual_modem/text.h>

#include <string>

namespace virtual_modem::exchange {
namespace {

constexpr const char* kReset = "\033[0m";
constexpr const char* kBold = "\033[1m";
constexpr const char* kDim = "\033[2m";
constexpr const char* kCyan = "\033[36m";
constexpr const char* kGreen = "\033[32m";

// Data-share types carry their package, which the title of that scenario names.
std::string_view ShortName(std::string_view type) { return type.substr(type.rfind('.') + 1); }

int Width(std::string_view text) { return static_cast<int>(text.size()); }

}  // namespace

void Timeline::Title(std::string_view scenario, std::string_view what) {
  std::fprintf(out_, "%s%.*s: %.*s%s\n", Color(kBold), Width(scenario), scenario.data(),
               Width(what), what.data(), Color(kReset));
  std::fprintf(out_, "%s     ms    type                           bytes  fields%s\n", Color(kDim),
               Color(kReset));
}

void Timeline::Message(Direction direction, const Frame& frame, const MessageLite& message) {
  const std::chrono::duration<double, std::milli> elapsed =
      std::chrono::steady_clock::now() - start_;
  const bool sent = direction == Direction::kSent;
  const std::string_view type = ShortName(frame.type);

  std::string text(OperationName(frame.operation));
  if (!text.empty()) text += ": ";
  TextOptions text_options;
  text_options.show_subscriber_data = options_.show;
  text += ToText(message, text_options);
  for (const std::string& missing : MissingFields(message)) text += " (no " + missing + ")";

  std::fprintf(out_, "%s%7.2f%s %s%s %-30.*s%s %5zu  %s\n", Color(kDim), elapsed.count(),
               Color(kReset), Color(sent ? kCyan : kGreen), sent ? "->" : "<-", Width(type),
               type.data(), Color(kReset), frame.payload.size(), text.c_str());
  if (options_.hex) {
    std::fprintf(out_, "%s        ", Color(kDim));
    const std::string bytes = options_.show ? std::string(frame.payload) : MaskedBytes(message);
    for (const char c : bytes) std::fprintf(out_, " %02x", static_cast<unsigned char>(c));
    std::fprintf(out_, "%s\n", Color(kReset));
  }
  ++messages_;
  bytes_ += frame.payload.size();
}

void Timeline::Note(std::string_view text) const {
  std::fprintf(out_, "%s           %.*s%s\n", Color(kDim), Width(text), text.data(), Color(kReset));
}

void Timeline::Total() const { std::fprintf(out_, "%d messages, %zu bytes\n", messages_, bytes_); }

}  // namespace virtual_modem::exchange
