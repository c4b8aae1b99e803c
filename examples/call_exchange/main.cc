// call_exchange: a telephony process and a modem process talk through the library's messages.
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <optional>
#include <system_error>
#include <utility>

#include "call_exchange/modem/modem.h"
#include "call_exchange/options.h"
#include "call_exchange/pcap.h"
#include "call_exchange/processes.h"
#include "call_exchange/timeline.h"

namespace virtual_modem::exchange {
namespace {

bool WantsColor() {
  const char* no_color = std::getenv("NO_COLOR");  // https://no-color.org
  return isatty(STDOUT_FILENO) == 1 && (no_color == nullptr || *no_color == '\0');
}

int Main(int argc, char** argv) {
  const Options options = ParseOptions(argc, argv);
  const Side telephony = [&options](Channel channel) {
    Timeline timeline(stdout, WantsColor(), options.hex);
    Observer observer;
    observer.on_message = [&timeline](Direction direction, const Frame& frame,
                                      const MessageLite& message) {
      timeline.Message(direction, frame, message);
    };
    std::optional<PcapWriter> pcap;
    if (options.pcap) {
      pcap.emplace(*options.pcap);
      observer.on_frame = [&pcap](Direction direction, std::string_view bytes) {
        pcap->Write(direction, bytes);
      };
    }
    Endpoint endpoint(std::move(channel), std::move(observer));
    Telephony role(endpoint, timeline, options.settings);
    for (const Scenario* scenario : options.scenarios) {
      timeline.Title(scenario->name, scenario->what);
      scenario->play(role);
    }
    timeline.Total();
    if (std::fflush(stdout) != 0 || std::ferror(stdout) != 0) {
      throw std::system_error(errno, std::generic_category(), "standard output");
    }
  };
  const Side modem = [](Channel channel) {
    Endpoint endpoint(std::move(channel));
    Modem(endpoint).Serve();
  };
  return RunPair(telephony, modem, options.timeout);
}

}  // namespace
}  // namespace virtual_modem::exchange

int main(int argc, char** argv) {
  try {
    return virtual_modem::exchange::Main(argc, argv);
  } catch (const std::exception& error) {
    std::fprintf(stderr, "call_exchange: %s\n", error.what());
    return EXIT_FAILURE;
  }
}
