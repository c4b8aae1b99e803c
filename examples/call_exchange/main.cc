// call_exchange: a telephony process and a modem process talk through the library's messages.
#include <fcntl.h>
#include <unistd.h>
#include <virtual_modem/text.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <system_error>

#include "call_exchange/modem/modem.h"
#include "call_exchange/options.h"
#include "call_exchange/processes.h"
#include "call_exchange/timeline.h"

namespace example {
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

int Main(int argc, char** argv) {
  ReserveStandardDescriptors();
  const Options options = ParseOptions(argc, argv);
  const Side telephony = [&options](int socket) {
    Timeline timeline(stdout, {WantsColor(), options.show, options.hex, options.pcap});
    Endpoint endpoint(socket, Direction::kToModem, options.timeout, timeline);
    Telephony role(endpoint, timeline, options.timeout, options.settings);
    for (const Scenario* scenario : options.scenarios) {
      timeline.Title(scenario->name, scenario->what);
      scenario->play(role);
    }
    timeline.Total();
    if (std::fflush(stdout) != 0 || std::ferror(stdout) != 0) {
      throw std::system_error(errno, std::generic_category(), "standard output");
    }
  };
  const Side modem = [&options](int socket) {
    ModemLog log;
    Endpoint endpoint(socket, Direction::kToTelephony, options.timeout, log);
    Modem(endpoint).Serve(options.timeout);
  };
  return RunPair(telephony, modem, options.socket_type, options.timeout);
}

}  // namespace
}  // namespace example

int main(int argc, char** argv) {
  try {
    return example::Main(argc, argv);
  } catch (const std::exception& error) {
    std::fprintf(stderr, "call_exchange: %s\n", error.what());
    return EXIT_FAILURE;
  }
}
