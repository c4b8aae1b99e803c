// Fuzz target over frames from a stream: cut and joined in several ways, it reads alike in all, and
// frames are written back as they came. And over the receiving side of the example, the client's
// endpoint and the modem: the input comes in two pieces, cut where its last byte says.
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
#include <vector>

#include "call_exchange/modem/modem.h"
#include "check.h"

namespace virtual_modem {
namespace {

constexpr std::size_t kMaxMessage = 64;

struct Told {
  FrameStatus status;
  std::uint64_t size;
  std::string frame;  // of kFrame, its bytes; of kTooLarge, its type

  bool operator==(const Told& other) const {
    return status == other.status && size == other.size && frame == other.frame;
  }
};

// next_size() gives the size of each piece.
template <typename NextSize>
std::vector<Told> Read(std::string_view stream, FrameReader::TooLarge too_large,
                       NextSize next_size) {
  FrameReader reader(kMaxMessage, too_large);
  std::vector<Told> all;
  std::uint64_t taken = 0;
  for (std::string_view left = stream; !left.empty();) {
    const std::string piece(left.substr(0, next_size()));  // freed before the next one is added
    left.remove_prefix(piece.size());
    reader.Add(piece);
    while (const auto read = reader.Next()) {
      FUZZ_CHECK(all.empty() || all.back().status <= FrameStatus::kTooLarge, "told after the end");
      Told told{read->status, read->size, std::string(read->frame.type)};
      if (read->status == FrameStatus::kFrame) {
        told.frame.clear();
        FUZZ_CHECK(read->frame.message.size() <= kMaxMessage, "bound");
        FUZZ_CHECK(AppendFrame(read->frame, told.frame), "a frame that cannot be written");
        FUZZ_CHECK(told.frame == stream.substr(static_cast<std::size_t>(taken), read->size),
                   "round trip");
      }
      taken += read->size;
      all.push_back(told);
    }
  }
  FUZZ_CHECK(reader.ended() || reader.between_frames() == (taken == stream.size()), "where it is");
  return all;
}

void CutAndJoin(std::string_view stream) {
  for (const auto too_large : {FrameReader::TooLarge::kEnds, FrameReader::TooLarge::kSkipped}) {
    const auto whole = Read(stream, too_large, [&] { return stream.size(); });
    FUZZ_CHECK(whole == Read(stream, too_large, [] { return 1U; }), "byte by byte");
    std::uint32_t seed = 2166136261U;
    for (const char c : stream) seed = (seed ^ static_cast<std::uint8_t>(c)) * 16777619U;
    const auto next_size = [&seed] { return (seed = seed * 1103515245U + 12345U) >> 16U & 31U; };
    FUZZ_CHECK(whole == Read(stream, too_large, next_size), "in pieces");
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
