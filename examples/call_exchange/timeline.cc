#include "call_exchange/timeline.h"

#include <virtual_modem/text.h>

#include <iterator>
#include <stdexcept>
#include <string>

namespace example {
namespace {

constexpr const char* kReset = "\033[0m";
constexpr const char* kBold = "\033[1m";
constexpr const char* kDim = "\033[2m";
constexpr const char* kCyan = "\033[36m";
constexpr const char* kGreen = "\033[32m";

// In words, by their number.
constexpr const char* kOperations[] = {"",
                                       "registration",
                                       "operator",
                                       "current calls",
                                       "call state changed",
                                       "last call failure cause",
                                       "card status",
                                       "signal strength",
                                       "IMS call",
                                       "merge into a conference"};

// Data-share types carry their package, which the title of that scenario names.
std::string_view ShortName(std::string_view type) { return type.substr(type.rfind('.') + 1); }

int Width(std::string_view text) { return static_cast<int>(text.size()); }

}  // namespace

Timeline::Timeline(std::FILE* out, const Options& options) : out_(out), options_(options) {
  virtual_modem::CaptureOptions capture_options;
  capture_options.show_subscriber_data = options.show;
  if (options.pcap && !capture_.Open(*options.pcap, capture_options)) {
    throw std::runtime_error(capture_.error());
  }
}

void Timeline::Title(std::string_view scenario, std::string_view what) {
  std::fprintf(out_, "%s%.*s: %.*s%s\n", Color(kBold), Width(scenario), scenario.data(),
               Width(what), what.data(), Color(kReset));
  std::fprintf(out_, "%s     ms    type                           bytes  fields%s\n", Color(kDim),
               Color(kReset));
}

void Timeline::Passed(Direction direction, const Frame& frame, const MessageLite* message) {
  if (options_.pcap && !capture_.Write(direction, frame.type, frame.message, frame.operation)) {
    throw std::runtime_error(capture_.error());
  }
  const std::chrono::duration<double, std::milli> elapsed = Clock::now() - start_;
  const bool sent = direction == Direction::kToModem;
  const std::string_view type = ShortName(frame.type);
  std::string text;
  if (frame.operation > 0 && frame.operation < std::size(kOperations)) {
    text = std::string(kOperations[frame.operation]) + ": ";
  }
  virtual_modem::TextOptions text_options;
  text_options.show_subscriber_data = options_.show;
  text += message != nullptr ? virtual_modem::ToText(*message, text_options)
                             : virtual_modem::ToText(frame.type, frame.message, text_options);
  if (message != nullptr) {
    for (const auto& field : virtual_modem::MissingFields(*message)) text += " (no " + field + ")";
  }

  std::fprintf(out_, "%s%7.2f%s %s%s %-30.*s%s %5zu  %s\n", Color(kDim), elapsed.count(),
               Color(kReset), Color(sent ? kCyan : kGreen), sent ? "->" : "<-", Width(type),
               type.data(), Color(kReset), frame.message.size(), text.c_str());
  if (options_.hex) {
    std::fprintf(out_, "%s        ", Color(kDim));
    const std::string bytes = options_.show ? std::string(frame.message)
                                            : virtual_modem::MaskedBytes(frame.type, frame.message);
    for (const char c : bytes) std::fprintf(out_, " %02x", static_cast<unsigned char>(c));
    std::fprintf(out_, "%s\n", Color(kReset));
  }
  ++messages_;
  bytes_ += frame.message.size();
}

void Timeline::Note(const std::string& text) {
  std::fprintf(out_, "%s           %s%s\n", Color(kDim), text.c_str(), Color(kReset));
}

void Timeline::Total() const { std::fprintf(out_, "%d messages, %zu bytes\n", messages_, bytes_); }

}  // namespace example
