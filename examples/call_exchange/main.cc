// call_exchange: a telephony process and a modem process talk through the library's messages.
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>
#include <virtual_modem/capture.h>
#include <virtual_modem/text.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <iterator>
#include <stdexcept>
#include <string>
#include <string_view>
#include <system_error>
#include <vector>

#include "call_exchange/modem.h"
#include "call_exchange/telephony.h"

namespace example {
namespace {

constexpr std::chrono::seconds kTimeout{5};  // for the other process

constexpr const char* kUsage =
    "Usage: call_exchange [OPTION...] [SCENARIO...]\n"
    "Plays scenarios (default: call) between a telephony process and a modem process.\n"
    "  --stream      join them by a stream rather than by packets\n"
    "  --show        show subscriber data and unknown fields, here and in the capture\n"
    "  --pcap FILE   write a capture, for Wireshark\n"
    "  --help        show this\n"
    "Scenarios:\n";

struct Options {
  int socket_type = SOCK_SEQPACKET;
  bool show = false;
  std::string pcap;  // path; empty for none
  std::vector<Scenario> scenarios;
};

// Ends the program after --help, and when something is wrong.
Options ParseOptions(const std::vector<std::string_view>& words) {
  Options options;
  for (auto word = words.begin(); word != words.end(); ++word) {
    const auto found =
        std::find_if(kScenarios.begin(), kScenarios.end(),
                     [&word](const Scenario& scenario) { return scenario.name == *word; });
    if (*word == "--stream") {
      options.socket_type = SOCK_STREAM;
    } else if (*word == "--show") {
      options.show = true;
    } else if (*word == "--pcap" && word + 1 != words.end()) {
      options.pcap = *++word;
    } else if (*word == "all") {
      options.scenarios.insert(options.scenarios.end(), kScenarios.begin(), kScenarios.end());
    } else if (found != kScenarios.end()) {
      options.scenarios.push_back(*found);
    } else if (*word == "--help") {
      std::fputs(kUsage, stdout);
      for (const auto& [name, what, play] : kScenarios) {
        std::printf("  %-13s %s\n", name.data(), what.data());
      }
      std::printf("  %-13s all of them\n", "all");
      std::exit(EXIT_SUCCESS);
    } else {
      std::fprintf(stderr, "call_exchange: '%s' is not understood; see --help\n", word->data());
      std::exit(2);
    }
  }
  if (options.scenarios.empty()) options.scenarios.push_back(kScenarios[0]);
  return options;
}

// What an operation asks for, by its number.
constexpr const char* kOperations[] = {"",
                                       "registration: ",
                                       "operator: ",
                                       "current calls: ",
                                       "call state changed: ",
                                       "last call failure cause: ",
                                       "card status: ",
                                       "signal strength: ",
                                       "IMS call: ",
                                       "merge into a conference: "};

// The exchange for people, one line a message, and its capture.
class Timeline : public Log {
 public:
  explicit Timeline(const Options& options) : captures_(!options.pcap.empty()) {
    text_options_.show_subscriber_data = options.show;
    virtual_modem::CaptureOptions capture_options;
    capture_options.show_subscriber_data = options.show;
    if (captures_) RequireCapture(capture_.Open(options.pcap, capture_options));
  }

  void Passed(Direction direction, const Frame& frame, const MessageLite* message) override {
    if (captures_) {
      RequireCapture(capture_.Write(direction, frame.type, frame.message, frame.operation));
    }
    std::string text = frame.operation < std::size(kOperations) ? kOperations[frame.operation] : "";
    if (message == nullptr) {
      text += virtual_modem::ToText(frame.type, frame.message, text_options_);
    } else {
      text += virtual_modem::ToText(*message, text_options_);
      for (const auto& field : virtual_modem::MissingFields(*message)) {
        text += " (no " + field + ")";
      }
    }
    // The title of the scenario names the package.
    const std::string type(frame.type.substr(frame.type.rfind('.') + 1));
    const std::chrono::duration<double, std::milli> elapsed = Clock::now() - start_;
    std::printf("%7.2f %s %-30s %5zu  %s\n", elapsed.count(),
                direction == Direction::kToModem ? "->" : "<-", type.c_str(), frame.message.size(),
                text.c_str());
    ++messages_;
    bytes_ += frame.message.size();
  }
  void Note(const std::string& text) override { std::printf("           %s\n", text.c_str()); }

  void Total() const { std::printf("%d messages, %zu bytes\n", messages_, bytes_); }

 private:
  void RequireCapture(bool written) const {
    if (!written) throw std::runtime_error(capture_.error());
  }

  const bool captures_;
  virtual_modem::TextOptions text_options_;
  virtual_modem::CaptureWriter capture_;
  const Clock::time_point start_ = Clock::now();
  int messages_ = 0;
  std::size_t bytes_ = 0;
};

// Reports on standard error what the modem cannot read; the telephony side shows everything else.
class ModemLog : public Log {
 public:
  void Passed(Direction /*direction*/, const Frame& frame, const MessageLite* message) override {
    if (message == nullptr) Note("ignored: " + virtual_modem::ToText(frame.type, frame.message));
  }
  void Note(const std::string& text) override {
    std::fprintf(stderr, "call_exchange: modem: %s\n", text.c_str());
  }
};

void PlayTelephony(const Options& options, Timeline& timeline, int socket) {
  Endpoint endpoint(socket, Direction::kToModem, kTimeout, timeline);
  Telephony telephony(endpoint, timeline, kTimeout);
  for (const auto& [name, what, play] : options.scenarios) {
    std::printf("%s: %s\n", name.data(), what.data());
    std::printf("     ms    type                           bytes  fields\n");
    play(telephony);
  }
  timeline.Total();
  if (std::fflush(stdout) != 0) {
    throw std::system_error(errno, std::generic_category(), "standard output");
  }
}

void PlayModem(int socket) {
  ModemLog log;
  Endpoint endpoint(socket, Direction::kToTelephony, kTimeout, log);
  Modem(endpoint).Serve(kTimeout);
}

int Main(const Options& options) {
  Timeline timeline(options);
  std::array<int, 2> sockets{};
  if (socketpair(AF_UNIX, options.socket_type | SOCK_CLOEXEC, 0, sockets.data()) != 0) {
    throw std::system_error(errno, std::generic_category(), "socketpair");
  }
  const pid_t child = fork();
  if (child < 0) throw std::system_error(errno, std::generic_category(), "fork");
  // The other's end is closed, else a process would keep itself waiting.
  close(sockets[child == 0 ? 0 : 1]);
  const char* const side = child == 0 ? "modem" : "telephony";
  int result = EXIT_SUCCESS;
  try {
    child == 0 ? PlayModem(sockets[1]) : PlayTelephony(options, timeline, sockets[0]);
  } catch (const std::exception& error) {
    std::fflush(stdout);  // keeps what was shown before the error before it
    std::fprintf(stderr, "call_exchange: %s: %s\n", side, error.what());
    result = EXIT_FAILURE;
  }
  if (child == 0) return result;
  int status = 0;
  waitpid(child, &status, 0);
  if (WIFSIGNALED(status)) {
    std::fprintf(stderr, "call_exchange: modem was ended by signal %d\n", WTERMSIG(status));
  }
  return status == 0 ? result : EXIT_FAILURE;
}

}  // namespace
}  // namespace example

int main(int argc, char** argv) {
  try {
    return example::Main(example::ParseOptions({argv + 1, argv + argc}));
  } catch (const std::exception& error) {
    std::fprintf(stderr, "call_exchange: %s\n", error.what());
    return EXIT_FAILURE;
  }
}
