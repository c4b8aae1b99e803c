// Fuzz target over frames from a stream: cut in several ways, it reads alike in all. And over the
// receiving side of the example, the client's endpoint and the modem: the input comes in two
// pieces, cut where its last byte says.
#include <sys/socket.h>
#include <unistd.h>
#include <virtual_modem/frame.h>
#include <virtual_modem/text.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "call_exchange/modem.h"
#include "check.h"

namespace virtual_modem {
namespace {

constexpr std::size_t kMaxMessage = 64;

// What a reader tells of a stream that comes in pieces of that size.
std::string Told(std::string_view stream, FrameReader::TooLarge too_large, std::size_t size) {
  FrameReader reader(kMaxMessage, too_large);
  std::string told;
  while (!stream.empty()) {
    const std::string piece(stream.substr(0, size));  // freed before the next one is added
    stream.remove_prefix(piece.size());
    reader.Add(piece);
    while (const auto read = reader.Next()) {
      told += Explain(read->status);
      told += std::to_string(read->size);
      if (read->status != FrameStatus::kFrame) continue;
      FUZZ_CHECK(read->frame.message.size() <= kMaxMessage, "bound");
      FUZZ_CHECK(AppendFrame(read->frame, told), "a frame that cannot be written");
    }
  }
  return told + (reader.ended() ? "ended" : reader.between_frames() ? "between" : "within");
}

void CutAndJoin(std::string_view stream) {
  for (const auto too_large : {FrameReader::TooLarge::kEnds, FrameReader::TooLarge::kSkipped}) {
    const std::string whole = Told(stream, too_large, stream.size());
    FUZZ_CHECK(whole == Told(stream, too_large, 1), "byte by byte");
    FUZZ_CHECK(whole == Told(stream, too_large, 7), "in pieces");
  }
}

}  // namespace
}  // namespace virtual_modem

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
  FUZZ_CHECK(answers.between_frames() || !endpoint.connected(), "half an answer");
  close(sockets[1]);
}

}  // namespace
}  // namespace example

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size == 0 || size > 2 * example::kMaxMessage) return -1;
  virtual_modem::CutAndJoin({reinterpret_cast<const char*>(data), size});
  example::Run({reinterpret_cast<const char*>(data), size});
  return 0;
}
