// The client and the example exchange under fault: whatever the other side does, each side ends
// with a clear error or goes on as documented; none hangs.
#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <unistd.h>
#include <virtual_modem/testing.h>

#include <array>
#include <chrono>
#include <csignal>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include "call_exchange/modem.h"
#include "call_exchange/telephony.h"

namespace example {
namespace {

using std::chrono::milliseconds;
using ::testing::AnyOf;
using ::testing::ElementsAre;
using ::testing::EndsWith;
using ::testing::IsEmpty;

// Long enough never to run out on a busy machine: a test in which it does has found a hang.
constexpr milliseconds kNoHang{20'000};
constexpr milliseconds kShort{50};

class Notes : public Log {
 public:
  // Throws at its message number `last`, counted from 1 in both directions.
  explicit Notes(int last = 0) : left_(last) {}

  void Passed(Direction, const Frame& frame, const MessageLite* message) override {
    if (--left_ == 0) throw std::runtime_error("killed");
    if (message == nullptr) Note("ignored: " + std::string(frame.type));
  }
  void Note(const std::string& text) override { all.push_back(text); }

  std::vector<std::string> all;

 private:
  int left_;
};

std::array<int, 2> Sockets(int kind) {
  std::array<int, 2> sockets{};
  EXPECT_EQ(socketpair(AF_UNIX, kind, 0, sockets.data()), 0);
  return sockets;
}

template <typename Play>
std::string ErrorOf(const Play& play) {
  try {
    play();
    return "";
  } catch (const std::runtime_error& error) {
    return error.what();
  }
}

// A side that is killed closes its end, read to its end or not.
TEST(Exchange, EitherSideKilledAtEveryStep) {
  constexpr int kMessages = 62;
  int lost_calls = 0;
  for (int step = 1; step <= 2 * kMessages; ++step) {
    const auto sockets = Sockets(step % 4 < 2 ? SOCK_SEQPACKET : SOCK_STREAM);
    const bool kills_modem = step % 2 == 0;
    std::string modem_says;
    std::thread modem([&] {
      modem_says = ErrorOf([&] {
        Notes notes(kills_modem ? step / 2 : 0);
        Endpoint endpoint(sockets[1], Direction::kToTelephony, kNoHang, notes);
        Modem(endpoint).Serve(kNoHang);
      });
    });
    const std::string telephony_says = ErrorOf([&] {
      Notes notes(kills_modem ? 0 : (step + 1) / 2);
      Endpoint endpoint(sockets[0], Direction::kToModem, kNoHang, notes);
      Telephony telephony(endpoint, notes, kNoHang);
      for (const Scenario& scenario : kScenarios) scenario.play(telephony);
    });
    modem.join();
    if (kills_modem) {
      EXPECT_EQ(modem_says, "killed") << step;
      EXPECT_THAT(telephony_says, EndsWith(": the other side closed it")) << step;
    } else {
      EXPECT_EQ(telephony_says, "killed") << step;
      EXPECT_THAT(modem_says,
                  AnyOf("", "the telephony side is gone during a call", "the other side closed it"))
          << step;
      if (modem_says == "the telephony side is gone during a call") ++lost_calls;
    }
  }
  EXPECT_GT(lost_calls, 0);
  EXPECT_LT(lost_calls, kMessages);
}

// One end of a pair of sockets as it is, and an endpoint at the other.
struct Link {
  explicit Link(int kind = SOCK_SEQPACKET, milliseconds patience = kNoHang) {
    const auto sockets = Sockets(kind);
    raw = sockets[0];
    endpoint_socket = sockets[1];
    endpoint.emplace(sockets[1], Direction::kToModem, patience, notes);
  }
  ~Link() { close(raw); }
  void Write(std::string_view bytes) const {
    EXPECT_EQ(send(raw, bytes.data(), bytes.size(), 0), static_cast<ssize_t>(bytes.size()));
  }
  std::string Receive(milliseconds wait = kShort) {
    const auto received = endpoint->Receive(Clock::now() + wait);
    return received ? received->type->name : endpoint->why_ended();
  }

  int raw = -1;
  int endpoint_socket = -1;
  Notes notes;
  std::optional<Endpoint> endpoint;
};

std::string FrameOf(std::string_view type, std::string_view message) {
  std::string bytes;
  EXPECT_TRUE(virtual_modem::AppendFrame({0, type, message}, bytes));
  return bytes;
}

TEST(Exchange, WhatIsNoFrameEndsTheConnection) {
  const std::string dial = FrameOf("Dial", "\x08\x01");
  const struct {
    int kind;
    std::string bytes;
    const char* why;
  } faults[] = {
      {SOCK_SEQPACKET, dial.substr(0, 13), "a packet ends within a frame"},
      {SOCK_SEQPACKET, "noise", "a frame does not begin with 'VM'"},
      {SOCK_SEQPACKET, FrameOf("Dial", std::string(kMaxMessage + 1, '\0')),
       "a frame is larger than allowed"},
      {SOCK_STREAM, "noise", "a frame does not begin with 'VM'"},
      {SOCK_STREAM, dial.substr(0, 13), "the other side closed it within a frame"},
      {SOCK_STREAM, "", "the other side closed it"},
  };
  for (const auto& [kind, bytes, why] : faults) {
    Link link(kind);
    link.Write(dial + bytes);
    shutdown(link.raw, SHUT_WR);
    EXPECT_EQ(link.Receive(), "Dial");
    EXPECT_EQ(link.Receive(), why);
    EXPECT_FALSE(link.endpoint->Send(Dial()));
    EXPECT_EQ(link.endpoint->closed(), bytes.empty());
  }
}

// What is a frame but no message of here is passed over; a stream may bring it in pieces.
TEST(Exchange, PassesOverWhatItCannotRead) {
  for (const int kind : {SOCK_SEQPACKET, SOCK_STREAM}) {
    Link link(kind);
    const std::string bytes =
        FrameOf("Dail", "") + FrameOf("Dial", "\x1a\x7f") + FrameOf("Hangup", "\x08\x01");
    const std::size_t piece = kind == SOCK_STREAM ? 1 : bytes.size();
    for (std::size_t at = 0; at < bytes.size(); at += piece) {
      EXPECT_EQ(link.Receive(milliseconds(0)), "");
      link.Write(bytes.substr(at, piece));
    }
    EXPECT_EQ(link.Receive(), "Hangup");
    EXPECT_THAT(link.notes.all, ElementsAre("ignored: Dail", "ignored: Dial"));
  }
}

TEST(Exchange, PeerThatIsGoneOrTakesNothing) {
  const auto before = std::signal(SIGPIPE, SIG_DFL);  // whatever the caller of the test ignores
  for (const int kind : {SOCK_SEQPACKET, SOCK_STREAM}) {
    Link full(kind, kShort);
    const std::string large(30'000, '1');
    Dial dial;
    dial.set_address(large);
    while (full.endpoint->Send(dial)) {
    }
    EXPECT_EQ(full.endpoint->why_ended(), "the other side takes nothing");
    Link gone(kind);
    shutdown(gone.raw, SHUT_RDWR);
    EXPECT_FALSE(gone.endpoint->Send(dial));
    EXPECT_EQ(gone.endpoint->why_ended(), "the other side closed it");
    Link too_large(kind);
    dial.set_address(large + large);
    EXPECT_FALSE(too_large.endpoint->Send(dial));
    EXPECT_TRUE(too_large.endpoint->connected());
  }
  std::signal(SIGPIPE, before);
}

TEST(Exchange, StreamTakesAMessageInPieces) {
  Link link(SOCK_STREAM);
  constexpr int kSmall = 2048;
  setsockopt(link.endpoint_socket, SOL_SOCKET, SO_SNDBUF, &kSmall, sizeof(kSmall));
  std::string read;
  std::thread reader([&] {
    std::array<char, 1000> piece{};
    for (ssize_t size = 0; (size = recv(link.raw, piece.data(), piece.size(), 0)) > 0;) {
      read.append(piece.data(), static_cast<std::size_t>(size));
    }
  });
  Dial dial;
  dial.set_address(std::string(30'000, '1'));
  EXPECT_TRUE(link.endpoint->Send(dial));
  link.endpoint.reset();
  reader.join();
  EXPECT_EQ(read, FrameOf("Dial", dial.SerializePartialAsString()));
}

// Signals neither end a wait nor lengthen it.
TEST(Exchange, WaitUnderSignals) {
  struct sigaction before {};
  struct sigaction ignore {};
  ignore.sa_handler = [](int) {};
  sigaction(SIGALRM, &ignore, &before);
  const itimerval often{{0, 1000}, {0, 1000}};
  setitimer(ITIMER_REAL, &often, nullptr);
  Link link;
  const auto start = Clock::now();
  EXPECT_EQ(link.Receive(), "");
  EXPECT_GE(Clock::now() - start, kShort);
  const itimerval never{};
  setitimer(ITIMER_REAL, &never, nullptr);
  sigaction(SIGALRM, &before, nullptr);
}

TEST(Exchange, SeveralRequestsExpireAtOnce) {
  Link link;
  Client client(*link.endpoint, link.notes, milliseconds(1), INT32_MAX);
  int answers = 0;
  const auto ask = [&](const Client::Answer<NoResultResponse>& answer) {
    client.Ask<NoResultResponse>(NoParmRequest(), Operation::kByType, answer);
  };
  const auto count = [&](const NoResultResponse* response) {
    EXPECT_EQ(response, nullptr);
    ++answers;
  };
  ask(count);
  ask([&](const NoResultResponse* response) {
    count(response);
    ask(count);
  });
  ask(count);
  std::this_thread::sleep_for(milliseconds(2));
  EXPECT_TRUE(client.Run([&] { return answers == 4; }, Clock::now() + kNoHang));
  EXPECT_THAT(link.notes.all, ElementsAre("request 1 timed out", "request 2 timed out",
                                          "request 2147483647 timed out", "request 3 timed out"));
}

TEST(Exchange, TelephonySaysWhatIsWrong) {
  const auto ask = [](Telephony& telephony) { telephony.Ask<NoResultResponse>(Dial()); };
  const auto expect = [](Telephony& telephony) { telephony.Expect<Dial>(); };
  const struct {
    void (*play)(Telephony&);
    std::string from_modem;
    const char* error;
  } faults[] = {
      {ask, FrameOf("NoResultResponse", "\x08\x01\x10\x01"), "no usable answer to Dial"},
      {ask, FrameOf("NoResultResponse", "\x08\x01\x10\x01\x18\x01"),
       "Dial ended with RADIO_E_RADIO_NOT_AVAILABLE"},
      {expect, FrameOf("Hangup", "\x08\x01"), "awaited Dial, got Hangup"},
      {expect, FrameOf("Dial", "\x08\x01"), "the Dial received lacks a required field"},
      {expect, "", "the modem sent nothing"},
  };
  for (const auto& [play, from_modem, error] : faults) {
    Link link;
    Telephony telephony(*link.endpoint, link.notes, kShort);
    if (!from_modem.empty()) link.Write(from_modem);
    EXPECT_EQ(ErrorOf([&, play = play] { play(telephony); }), error);
  }
  Link link;
  link.Write(FrameOf("Dial", "\x08\x01\x10\x01\x1a\x01\x31\x20\x01"));
  Modem modem(*link.endpoint);
  const auto serve = [&] { modem.Serve(kShort); };
  EXPECT_EQ(ErrorOf(serve), "the telephony side sent nothing");
  shutdown(link.raw, SHUT_WR);
  EXPECT_EQ(ErrorOf(serve), "the telephony side is gone during a call");
}

template <typename Request>
Request Header(std::int32_t serial) {
  Request request;
  request.set_platformtype(QCOM);
  request.set_serial(serial);
  return request;
}

// The modem's answers to one message.
std::vector<std::unique_ptr<MessageLite>> AnswersTo(const MessageLite& message) {
  Link link;
  Notes notes;
  Endpoint client(dup(link.raw), Direction::kToModem, kNoHang, notes);
  EXPECT_TRUE(client.Send(message));
  Modem(*link.endpoint).Take(*link.endpoint->Receive(Clock::now() + kNoHang));
  std::vector<std::unique_ptr<MessageLite>> answers;
  while (auto answer = client.Receive(Clock::now())) answers.push_back(std::move(answer->message));
  return answers;
}

std::unique_ptr<MessageLite> AnswerTo(const MessageLite& message) {
  auto answers = AnswersTo(message);
  EXPECT_EQ(answers.size(), 1U);
  return std::move(answers.at(0));
}

TEST(Modem, RefusesInTheResponseAwaited) {
  auto mute = Header<SetMute>(7);
  mute.set_enable(true);
  auto refused = Header<NoResultResponse>(7);
  refused.set_error(RADIO_E_REQUEST_NOT_SUPPORTED);
  EXPECT_EQ(*AnswerTo(mute), refused);

  const auto gsm = AnswerTo(Header<SendGSMSms>(8));
  ASSERT_NE(virtual_modem::As<SendGsmSmsResponse>(*gsm), nullptr);
  EXPECT_EQ(virtual_modem::As<SendGsmSmsResponse>(*gsm)->error(), RADIO_E_INVALID_ARGUMENTS);
  auto sms = Header<ImsSmsMessage>(8);
  sms.set_retry(false);
  sms.set_messageref(0);
  sms.set_tech(THREE_GPP2);
  const auto cdma = AnswerTo(sms);
  ASSERT_NE(virtual_modem::As<SendCdmaSmsResponse>(*cdma), nullptr);
  EXPECT_EQ(virtual_modem::As<SendCdmaSmsResponse>(*cdma)->error(), RADIO_E_INVALID_SMS_FORMAT);
}

// Else two such peers would answer each other for ever.
TEST(Modem, AnswersNoResponseAndNothingThatLacksItsSerial) {
  auto result = Header<NoResultResponse>(7);
  EXPECT_THAT(AnswersTo(result), IsEmpty());
  result.set_error(RADIO_E_SUCCESS);
  EXPECT_THAT(AnswersTo(result), IsEmpty());
  EXPECT_THAT(AnswersTo(share::MasterSlaveShareConfirmRsp()), IsEmpty());
  EXPECT_THAT(AnswersTo(Dial()), IsEmpty());
}

}  // namespace
}  // namespace example
