// Fuzz target over the receiving side of the example: frames, the client's endpoint, the modem. The
// input comes in over a stream in two pieces, cut where its last byte says.
#include <sys/socket.h>
#include <unistd.h>
#include <virtual_modem/text.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "call_exchange/modem/modem.h"
#include "check.h"

namespace example {
namespace {

class Printable : public Log {
 public:
  void Passed(Direction /*direction*/, const Frame& frame, const MessageLite* message) override {
    Note(message != nullptr ? virtual_modem::ToText(*message)
                            : virtual_modem::ToText(frame.type, frame.message));
  }
  void Note(const std::string& text) override {
    FUZZ_CHECK(std::all_of(text.begin(), text.end(), [](char c) { return c >= ' ' && c <= '~'; }),
               "a byte that does not print");
  }
};

void Run(std::string_view input) {
  std::array<int, 2> sockets{};
  FUZZ_CHECK(socketpair(AF_UNIX, SOCK_STREAM, 0, sockets.data()) == 0, "socketpair");
  Printable log;
  Endpoint endpoint(sockets[0], Direction::kToTelephony, std::chrono::milliseconds(0), log);
  Modem modem(endpoint);
  const std::size_t cut =
      std::min<std::size_t>(static_cast<std::uint8_t>(input.back()), input.size());
  virtual_modem::FrameReader answers(kMaxMessage);
  for (const std::string_view piece : {input.substr(0, cut), input.substr(cut)}) {
    FUZZ_CHECK(
        send(sockets[1], piece.data(), piece.size(), MSG_NOSIGNAL) >= 0 || !endpoint.connected(),
        "send");
    while (const auto received = endpoint.Receive(Clock::now())) {
      modem.Take(*received);
      // Every answer is a frame.
      std::array<char, 4096> buffer{};
      for (ssize_t size = 0;
           (size = recv(sockets[1], buffer.data(), buffer.size(), MSG_DONTWAIT)) > 0;) {
        answers.Add({buffer.data(), static_cast<std::size_t>(size)});
        while (const auto answer = answers.Next()) {
          FUZZ_CHECK(answer->status == virtual_modem::FrameStatus::kFrame, "answer");
        }
      }
    }
  }
  FUZZ_CHECK(answers.between_frames(), "half an answer");
  close(sockets[1]);
}

}  // namespace
}  // namespace example

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size == 0 || size > 2 * example::kMaxMessage) return -1;
  example::Run({reinterpret_cast<const char*>(data), size});
  return 0;
}
