#include "call_exchange/timeline.h"

#include <string>

#include "call_exchange/essentials.h"

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

Timeline::Timeline(std::FILE* out, bool color, bool hex) : out_(out), color_(color), hex_(hex) {}

void Timeline::Title(std::string_view scenario, std::string_view what) {
  std::fprintf(out_, "%s%.*s: %.*s%s\n", Color(kBold), Width(scenario), scenario.data(),
               Width(what), what.data(), Color(kReset));
  std::fprintf(out_, "%s     ms    type                      serial bytes  essentials%s\n",
               Color(kDim), Color(kReset));
}

void Timeline::Message(Direction direction, const Frame& frame, const MessageLite& message) {
  const std::chrono::duration<double, std::milli> elapsed =
      std::chrono::steady_clock::now() - start_;
  const bool sent = direction == Direction::kSent;
  const auto serial = SerialOf(message);
  const std::string number = serial ? "#" + std::to_string(*serial) : "";
  const std::string_view type = ShortName(frame.type);

  std::string essentials(OperationName(frame.operation));
  if (const std::string more = Essentials(message); !more.empty()) {
    essentials += (essentials.empty() ? "" : ": ") + more;
  }
  if (!message.IsInitialized()) essentials += " (incomplete)";

  std::fprintf(out_, "%s%7.2f%s %s%s %-28.*s%s %4s %5zu  %s\n", Color(kDim), elapsed.count(),
               Color(kReset), Color(sent ? kCyan : kGreen), sent ? "->" : "<-", Width(type),
               type.data(), Color(kReset), number.c_str(), frame.payload.size(),
               essentials.c_str());
  if (hex_) {
    std::fprintf(out_, "%s        ", Color(kDim));
    for (const char c : frame.payload) std::fprintf(out_, " %02x", static_cast<unsigned char>(c));
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
