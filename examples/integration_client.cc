// A complete client: it dials, follows the call, hangs up and asks why the call ended. Everything
// that the library leaves to its callers is here, in one file to start from; docs/integration.md
// gives the reasons. Usage: integration_client SOCKET NUMBER [CAPTURE [FIRST_SERIAL]]
#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>
#include <virtual_modem/capture.h>
#include <virtual_modem/radio.pb.h>
#include <virtual_modem/text.h>
#include <virtual_modem/types.h>

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <chrono>
#include <cstdint>
#include <cstring>
#include <functional>
#include <iostream>
#include <limits>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <system_error>
#include <utility>

namespace {

using google::protobuf::MessageLite;
using virtual_modem::Kind;
using virtual_modem::Type;
using Clock = std::chrono::steady_clock;

constexpr std::chrono::seconds kTimeout{2};  // for each response
constexpr std::size_t kMaxMessage = 32768;   // bytes; bounds what a peer can make us spend

// What a message stands for where its type does not say; the numbers are agreed with the modem.
enum class Operation : std::uint8_t {
  kByType = 0,
  kCurrentCalls = 3,
  kCallStateChanged = 4,
  kLastCallFailCause = 5,
};

// ---- The frame ----------------------------------------------------------------------------------
// 'V' 'M', operation, length of the type name, size of the message (4 bytes, big-endian), type
// name, message. One packet is one frame.
constexpr std::size_t kHeader = 8;

struct Frame {
  Operation operation;
  std::string_view type;
  std::string_view message;
};

std::string WriteFrame(Operation operation, const MessageLite& message) {
  const std::string type = message.GetTypeName();
  const std::size_t size = message.ByteSizeLong();
  std::string packet = {'V', 'M', static_cast<char>(operation), static_cast<char>(type.size())};
  for (const unsigned shift : {24U, 16U, 8U, 0U}) packet += static_cast<char>(size >> shift);
  packet += type;
  message.AppendToString(&packet);
  return packet;
}

// Nothing when the packet is no frame.
std::optional<Frame> ReadFrame(std::string_view packet) {
  if (packet.size() < kHeader || packet.substr(0, 2) != "VM") return {};
  const auto byte = [packet](std::size_t at) { return static_cast<std::uint8_t>(packet[at]); };
  const std::size_t name = byte(3);
  std::size_t size = 0;
  for (std::size_t at = 4; at < kHeader; ++at) size = size << 8U | byte(at);
  if (size > kMaxMessage || packet.size() != kHeader + name + size) return {};
  return Frame{static_cast<Operation>(byte(2)), packet.substr(kHeader, name),
               packet.substr(kHeader + name)};
}

// ---- The client ---------------------------------------------------------------------------------
class Client {
 public:
  // With the response; null when none came in time, or none that can be used.
  template <typename Response>
  using Answer = std::function<void(const Response* response)>;
  using Indication = std::function<void(Operation operation, const MessageLite& message)>;

  // Takes over the connected socket.
  Client(int socket, std::int32_t first_serial, virtual_modem::CaptureWriter& capture)
      : socket_(socket), next_serial_(first_serial), capture_(capture) {}
  ~Client() { close(socket_); }
  Client(const Client&) = delete;
  Client& operator=(const Client&) = delete;

  void OnIndication(Indication indication) { indication_ = std::move(indication); }

  // Sends a request. answer() is called once: by Run(), or at once when it cannot be sent.
  template <typename Response, typename Request>
  void Ask(Request request, Operation operation, Answer<Response> answer) {
    request.set_platformtype(QCOM);
    request.set_serial(NextSerial());
    if (!connected_ || !Complete(request) || request.ByteSizeLong() > kMaxMessage) {
      return answer(nullptr);
    }
    pending_[request.serial()] = {&virtual_modem::TypeOf(Response::default_instance()),
                                  Clock::now() + kTimeout,
                                  [answer = std::move(answer)](const MessageLite* response) {
                                    answer(static_cast<const Response*>(response));
                                  }};
    Send(operation, request);
  }

  // Handles what comes in until done is true. False when the connection is lost.
  bool Run(const bool& done) {
    while (connected_ && !done) {
      pollfd ready{socket_, POLLIN, 0};
      const int count = poll(&ready, 1, MillisecondsToDeadline());
      if (count > 0) ReceivePacket();
      if (count < 0 && errno != EINTR) Disconnect(std::strerror(errno));
      ExpireRequests();
    }
    return connected_;
  }

 private:
  struct Pending {
    const Type* expected;
    Clock::time_point deadline;
    Answer<MessageLite> answer;
  };

  // Positive, since a negative number takes ten bytes, and never one that is still awaited.
  std::int32_t NextSerial() {
    std::int32_t serial = 0;
    do {
      serial = next_serial_;
      next_serial_ = serial == std::numeric_limits<std::int32_t>::max() ? 1 : serial + 1;
    } while (pending_.count(serial) != 0);
    return serial;
  }

  void Send(Operation operation, const MessageLite& message) {
    Log("->", operation, message);
    capture_.Write(virtual_modem::Direction::kToModem, message,
                   static_cast<std::uint8_t>(operation));
    const std::string packet = WriteFrame(operation, message);
    ssize_t sent = 0;
    do {
      sent = send(socket_, packet.data(), packet.size(), MSG_NOSIGNAL);
    } while (sent < 0 && errno == EINTR);
    if (sent < 0) Disconnect(std::strerror(errno));
  }

  void ReceivePacket() {
    const ssize_t size = recv(socket_, packet_.data(), packet_.size(), MSG_TRUNC);
    if (size < 0 && errno == EINTR) return;
    if (size <= 0) return Disconnect(size == 0 ? "the modem closed it" : std::strerror(errno));
    const auto length = static_cast<std::size_t>(size);
    const auto frame = length > packet_.size()
                           ? std::nullopt
                           : ReadFrame(std::string_view(packet_).substr(0, length));
    if (!frame) return Disconnect("a packet is no frame");
    Receive(*frame);
  }

  void Receive(const Frame& frame) {
    capture_.Write(virtual_modem::Direction::kToTelephony, frame.type, frame.message,
                   static_cast<std::uint8_t>(frame.operation));
    const Type* type = virtual_modem::FindType(frame.type);
    if (type == nullptr) {  // a newer modem's: nothing here can depend on it
      Note("ignored: a type not known here, " + std::to_string(frame.message.size()) + " bytes");
      return;
    }
    const std::unique_ptr<MessageLite> message(type->prototype->New());
    if (!message->ParsePartialFromArray(frame.message.data(),
                                        static_cast<int>(frame.message.size()))) {
      return Note(std::string("ignored: ") + type->name + ' ' +
                  virtual_modem::ToText(frame.type, frame.message));
    }
    Log("<-", frame.operation, *message);
    if (type->kind == Kind::kResponse) {
      Settle(*type, *message);
    } else if (!Complete(*message)) {
      Note("ignored");
    } else if (indication_) {
      indication_(frame.operation, *message);
    }
  }

  // Hands a response to who asked for it.
  void Settle(const Type& type, const MessageLite& response) {
    const auto found = pending_.find(virtual_modem::SerialOf(response).value_or(0));
    if (found == pending_.end()) return Note("ignored: late, double, or never asked for");
    const Pending pending = std::move(found->second);
    pending_.erase(found);
    const bool usable = &type == pending.expected && Complete(response);
    if (!usable) Note("not usable as the response");
    pending.answer(usable ? &response : nullptr);
  }

  // Whether every required field is there, at every depth; says which ones are not.
  static bool Complete(const MessageLite& message) {
    for (const std::string& field : virtual_modem::MissingFields(message)) Note("lacks " + field);
    return message.IsInitialized();
  }

  // As poll() takes it: -1 when nothing is awaited.
  int MillisecondsToDeadline() const {
    if (pending_.empty()) return -1;
    auto earliest = Clock::time_point::max();
    for (const auto& [serial, pending] : pending_) earliest = std::min(earliest, pending.deadline);
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(earliest - Clock::now()).count();
    return static_cast<int>(std::max<decltype(left)>(left, 0));
  }

  void ExpireRequests() {
    for (auto at = pending_.begin(); at != pending_.end();) {
      if (connected_ && Clock::now() < at->second.deadline) {
        ++at;
        continue;
      }
      Note("request " + std::to_string(at->first) + (connected_ ? " timed out" : " is lost"));
      const auto answer = std::move(at->second.answer);
      pending_.erase(at);
      answer(nullptr);
      at = pending_.begin();  // it may have asked again
    }
  }

  void Disconnect(const char* why) {
    connected_ = false;
    std::cerr << "integration_client: the connection ends: " << why << '\n';
  }

  // One line a message, subscriber data masked.
  static void Log(const char* direction, Operation operation, const MessageLite& message) {
    std::cout << direction << ' ' << message.GetTypeName() << '/' << static_cast<int>(operation)
              << ' ' << virtual_modem::ToText(message) << '\n';
  }
  static void Note(const std::string& text) { std::cout << "     " << text << '\n'; }

  int socket_;
  bool connected_ = true;
  std::int32_t next_serial_;
  std::map<std::int32_t, Pending> pending_;
  Indication indication_;
  virtual_modem::CaptureWriter& capture_;
  std::string packet_ = std::string(kHeader + 255 + kMaxMessage, '\0');
};

// ---- The application ----------------------------------------------------------------------------
class PhoneCall {
 public:
  explicit PhoneCall(Client& client) : client_(client) {
    client_.OnIndication([this](Operation operation, const MessageLite& message) {
      virtual_modem::Visit(message, Dispatch{*this, operation});
    });
  }

  const bool& done() const { return done_; }

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
  // What each type of indication means to this application.
  struct Dispatch {
    PhoneCall& call;
    Operation operation;

    void operator()(const NoResultIndication& /*indication*/) const {
      if (operation == Operation::kCallStateChanged) call.ListCalls();
    }
    void operator()(const VoiceRadioTechChanged& indication) const {
      std::cout << "== calls go over " << Technology_Name(indication.technology()) << '\n';
    }
    template <typename Message>
    void operator()(const Message& /*message*/) const {}  // of no use here
  };

  // What a response that reports a failure holds beside the error means nothing.
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

}  // namespace

int main(int argc, char** argv) {
  const std::string_view serial = argc > 4 ? argv[4] : "1";
  std::int32_t first_serial = 0;
  const auto [end, error] = std::from_chars(serial.begin(), serial.end(), first_serial);
  if (argc < 3 || argc > 5 || error != std::errc() || end != serial.end() || first_serial < 1) {
    std::cerr << "usage: integration_client SOCKET NUMBER [CAPTURE [FIRST_SERIAL]]\n";
    return 2;
  }
  virtual_modem::CaptureWriter capture;
  if (argc > 3 && !capture.Open(argv[3])) {
    std::cerr << "integration_client: " << capture.error() << '\n';
    return 1;
  }
  const int descriptor = Connect(argv[1]);
  if (descriptor < 0) {
    std::cerr << "integration_client: " << argv[1] << ": " << std::strerror(errno) << '\n';
    return 1;
  }
  Client client(descriptor, first_serial, capture);
  PhoneCall call(client);
  call.Dial(argv[2]);
  return client.Run(call.done()) ? 0 : 1;
}
