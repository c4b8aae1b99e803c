// A dialer on examples/client: it dials, follows the call, hangs up and asks why the call ended.
// docs/integration.md gives the reasons.
// Usage: integration_client SOCKET NUMBER [CAPTURE]
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>
#include <virtual_modem/capture.h>
#include <virtual_modem/radio.pb.h>
#include <virtual_modem/text.h>
#include <virtual_modem/types.h>

#include <cerrno>
#include <chrono>
#include <cstring>
#include <iostream>
#include <string>
#include <string_view>

#include "client/client.h"

namespace example {
namespace {

constexpr std::chrono::seconds kTimeout{2};  // for each response

// One line a message, subscriber data masked; and the capture.
class Console : public Log {
 public:
  explicit Console(virtual_modem::CaptureWriter& capture) : capture_(capture) {}

  void Passed(Direction direction, const Frame& frame, const MessageLite* message) override {
    capture_.Write(direction, frame.type, frame.message, frame.operation);
    std::cout << (direction == Direction::kToModem ? "-> " : "<- ") << frame.type << '/'
              << int{frame.operation} << ' '
              << (message != nullptr ? virtual_modem::ToText(*message)
                                     : virtual_modem::ToText(frame.type, frame.message))
              << '\n';
    if (message == nullptr) Note("ignored");
  }
  void Note(const std::string& text) override { std::cout << "     " << text << '\n'; }

 private:
  virtual_modem::CaptureWriter& capture_;
};

class PhoneCall {
 public:
  explicit PhoneCall(Client& client) : client_(client) {
    client_.OnNews([this](Operation operation, const MessageLite& message) {
      if (client_.Complete(message)) virtual_modem::Visit(message, News{*this, operation});
    });
  }

  bool done() const { return done_; }

  void Dial(const std::string& number) {
    ::Dial request;
    request.set_address(number);
    request.set_clir(CLIR_DEFAULT);
    client_.Ask<NoResultResponse>(request, Operation::kByType, [this](const auto* response) {
      if (response == nullptr) return ListCalls();
      if (!Succeeded(response)) End("refused: " + Radio_Errno_Name(response->error()));
    });
  }

 private:
  // What each type of indication means here; the others are ignored.
  struct News {
    PhoneCall& call;
    Operation operation;

    void operator()(const NoResultIndication& /*indication*/) const {
      if (operation == Operation::kCallStateChanged) call.ListCalls();
    }
    void operator()(const VoiceRadioTechChanged& indication) const {
      std::cout << "== calls go over " << Technology_Name(indication.technology()) << '\n';
    }
  };

  // The other fields of a response that reports an error mean nothing.
  template <typename Response>
  static bool Succeeded(const Response* response) {
    return response != nullptr && response->error() == RADIO_E_SUCCESS;
  }

  void ListCalls() {
    client_.Ask<GetCurrentCallsResponse>(NoParmRequest(), Operation::kCurrentCalls,
                                         [this](const auto* response) {
                                           if (!Succeeded(response))
                                             return End("the state of the call is not known");
                                           for (const Call& call : response->calls()) Follow(call);
                                           if (response->calls().empty()) AskWhyItEnded();
                                         });
  }

  void Follow(const Call& call) {
    std::cout << "== call " << call.index() << ": " << RadioCallState_Name(call.state()) << '\n';
    if (call.state() != RADIO_CALL_ACTIVE || hung_up_) return;
    hung_up_ = true;
    Hangup request;
    request.set_gsmindex(call.index());
    client_.Ask<NoResultResponse>(request, Operation::kByType, [this](const auto* response) {
      // No response does not mean that nothing happened: look, do not repeat.
      if (response == nullptr) ListCalls();
    });
  }

  void AskWhyItEnded() {
    client_.Ask<LastCallFailureCauseResponse>(
        NoParmRequest(), Operation::kLastCallFailCause, [this](const auto* response) {
          End(Succeeded(response) ? "ended: " + LastCallFailCause_Name(response->causecode())
                                  : "ended, the cause is not known");
        });
  }

  void End(const std::string& how) {
    std::cout << "== " << how << '\n';
    done_ = true;
  }

  Client& client_;
  bool hung_up_ = false;
  bool done_ = false;
};

// The connected socket, or -1 with errno.
int Connect(std::string_view path) {
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  if (path.size() >= sizeof(address.sun_path)) {
    errno = ENAMETOOLONG;
    return -1;
  }
  path.copy(static_cast<char*>(address.sun_path), path.size());
  const int descriptor = socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0);
  if (descriptor < 0) return -1;
  if (connect(descriptor, reinterpret_cast<const sockaddr*>(&address), sizeof(address)) != 0) {
    const int error = errno;
    close(descriptor);
    errno = error;
    return -1;
  }
  return descriptor;
}

int Main(int argc, char** argv) {
  if (argc < 3 || argc > 4) {
    std::cerr << "usage: integration_client SOCKET NUMBER [CAPTURE]\n";
    return 2;
  }
  virtual_modem::CaptureWriter capture;
  if (argc > 3 && !capture.Open(argv[3])) {
    std::cerr << "integration_client: " << capture.error() << '\n';
    return 1;
  }
  const int socket = Connect(argv[1]);
  if (socket < 0) {
    std::cerr << "integration_client: " << argv[1] << ": " << std::strerror(errno) << '\n';
    return 1;
  }
  Console console(capture);
  Endpoint endpoint(socket, Direction::kToModem, kTimeout, console);
  Client client(endpoint, console, kTimeout);
  PhoneCall call(client);
  call.Dial(argv[2]);
  client.Run([&call] { return call.done(); });
  if (endpoint.connected()) return 0;
  std::cerr << "integration_client: the connection ends: " << endpoint.why_ended() << '\n';
  return 1;
}

}  // namespace
}  // namespace example

int main(int argc, char** argv) { return example::Main(argc, argv); }
