// call_exchange: a telephony process and a modem process talk through the library's messages.
#include <fcntl.h>
#include <unistd.h>
#include <virtual_modem/capture.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <stdexcept>
#include <system_error>
#include <utility>

#include "call_exchange/modem/modem.h"
#include "call_exchange/options.h"
#include "call_exchange/processes.h"
#include "call_exchange/timeline.h"

namespace virtual_modem::exchange {
namespace {

bool WantsColor() {
  const char* no_color = std::getenv("NO_COLOR");  // https://no-color.org
  return isatty(STDOUT_FILENO) == 1 && (no_color == nullptr || *no_color == '\0');
}

// Occupies the standard descriptors that the caller has closed, so that a socket does not take
// their place and get what is printed; their use fails as before.
void ReserveStandardDescriptors() {
  for (int fd = STDIN_FILENO; fd <= STDERR_FILENO; ++fd) {
    if (fcntl(fd, F_GETFD) == -1) open("/dev/null", fd == STDIN_FILENO ? O_WRONLY : O_RDONLY);
  }
}

// Refused bytes are recorded too, as far as their frame says of what type they claim to be.
void Record(CaptureWriter& capture, Direction direction, std::string_view bytes) {
  Frame frame;
  if (ReadFrame(bytes, frame) != FrameFault::kNone) return;
  const bool sent = direction == Direction::kSent;
  if (!capture.Write(
          sent ? virtual_modem::Direction::kToModem : virtual_modem::Direction::kToTelephony,
          frame.type, frame.payload, static_cast<std::uint8_t>(frame.operation))) {
    throw std::runtime_error(capture.error());
  }
}

int Main(int argc, char** argv) {
  ReserveStandardDescriptors();
  const Options options = ParseOptions(argc, argv);
  const Side telephony = [&options](Channel channel) {
    Timeline timeline(stdout, {WantsColor(), options.show, options.hex});
    Observer observer;
    observer.on_message = [&timeline](Direction direction, const Frame& frame,
                                      const MessageLite& message) {
      timeline.Message(direction, frame, message);
    };
    CaptureWriter capture;
    if (options.pcap) {
      CaptureOptions capture_options;
      capture_options.show_subscriber_data = options.show;
      if (!capture.Open(*options.pcap, capture_options)) throw std::runtime_error(capture.error());
      observer.on_frame = [&capture](Direction direction, std::string_view bytes) {
        Record(capture, direction, bytes);
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
