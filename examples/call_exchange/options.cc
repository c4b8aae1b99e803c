#include "call_exchange/options.h"

#include <getopt.h>

#include <algorithm>
#include <cctype>
#include <charconv>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <functional>

namespace example {
namespace {

constexpr int kUsageError = 2;

constexpr const char* kUsage =
    "Usage: call_exchange [OPTION...] [SCENARIO...]\n"
    "Plays scenarios (default: call) between a telephony process and a modem process.\n"
    "  --number NUMBER   number to dial (default +861012345678)\n"
    "  --clir MODE       default, invocation (hide the own number) or suppression\n"
    "  --timeout MS      longest wait for the other process (default 5000)\n"
    "  --stream          join them by a stream rather than by packets\n"
    "  --show            show subscriber data and unknown fields, here and in the capture\n"
    "  --hex             show the bytes of each message\n"
    "  --pcap FILE       write a capture, for Wireshark\n"
    "  --list            list the scenarios\n"
    "  --help            show this\n"
    "Exit status: 0 when all went well, 1 when the exchange failed, 2 when the command is wrong.\n";

[[noreturn]] void Reject(const std::string& what) {
  std::fprintf(stderr, "call_exchange: %s; see --help\n", what.c_str());
  std::exit(kUsageError);
}

// What can be dialed: an optional + and 1 to 20 of 0-9, * and #, as many as the address of a short
// message holds (TS 23.040 9.1.2.5).
std::string ParseNumber(const std::string& text) {
  const std::string digits = text.substr(text.rfind('+', 0) == 0 ? 1 : 0);
  if (digits.empty() || digits.size() > 20 ||
      digits.find_first_not_of("0123456789*#") != std::string::npos) {
    Reject("'" + text + "' is not a number to dial");
  }
  return text;
}

Clir ParseClir(const std::string& text) {
  std::string name = "CLIR_" + text;
  std::transform(name.begin(), name.end(), name.begin(),
                 [](unsigned char c) { return std::toupper(c); });
  Clir clir{};
  if (!Clir_Parse(name, &clir)) {
    Reject("'" + text + "' is not a CLIR mode: default, invocation or suppression");
  }
  return clir;
}

std::chrono::milliseconds ParseTimeout(const std::string& text) {
  int milliseconds = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), milliseconds);
  if (error != std::errc() || end != text.data() + text.size() || milliseconds < 1 ||
      milliseconds > 600'000) {
    Reject("'" + text + "' is not a timeout in ms, 1 to 600000");
  }
  return std::chrono::milliseconds(milliseconds);
}

const Scenario* ParseScenario(std::string_view text) {
  for (const Scenario& scenario : kScenarios) {
    if (scenario.name == text) return &scenario;
  }
  Reject("no scenario '" + std::string(text) + "' (--list shows them)");
}

void ListScenarios() {
  for (const Scenario& scenario : kScenarios) {
    std::printf("%-11s %s\n", scenario.name.data(), scenario.what.data());
  }
  std::printf("%-11s %s\n", "all", "all of them");
}

}  // namespace

Options ParseOptions(int argc, char** argv) {
  Options result;
  const auto end_after = [](const auto& print) {
    print();
    std::exit(EXIT_SUCCESS);
  };
  const struct {
    const char* name;
    int argument;
    std::function<void()> take;
  } table[] = {
      {"number", required_argument, [&] { result.settings.number = ParseNumber(optarg); }},
      {"clir", required_argument, [&] { result.settings.clir = ParseClir(optarg); }},
      {"timeout", required_argument, [&] { result.timeout = ParseTimeout(optarg); }},
      {"stream", no_argument, [&] { result.socket_type = SOCK_STREAM; }},
      {"show", no_argument, [&] { result.show = true; }},
      {"hex", no_argument, [&] { result.hex = true; }},
      {"pcap", required_argument, [&] { result.pcap = optarg; }},
      {"list", no_argument, [&] { end_after(ListScenarios); }},
      {"help", no_argument, [&] { end_after([] { std::fputs(kUsage, stdout); }); }},
  };
  std::vector<option> options;
  for (const auto& entry : table) options.push_back({entry.name, entry.argument, nullptr, 0});
  options.push_back({});
  int index = 0;
  for (int found = 0; (found = getopt_long(argc, argv, "", options.data(), &index)) != -1;) {
    if (found == 0) {
      table[index].take();
    } else {
      std::fputs(kUsage, stderr);  // getopt_long has said what is wrong
      std::exit(kUsageError);
    }
  }
  for (int at = optind; at < argc; ++at) {
    if (std::strcmp(argv[at], "all") == 0) {
      for (const Scenario& scenario : kScenarios) result.scenarios.push_back(&scenario);
    } else {
      result.scenarios.push_back(ParseScenario(argv[at]));
    }
  }
  if (result.scenarios.empty()) result.scenarios.push_back(kScenarios.data());
  return result;
}

}  // namespace example
