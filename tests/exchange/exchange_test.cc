// The client and the example exchange under fault: whatever the other side does, each side ends
// with a clear error or goes on as documented; none hangs, and no descriptor or child is left over.
#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <sys/wait.h>
#include <unistd.h>
#include <virtual_modem/conference.pb.h>
#include <virtual_modem/testing.h>

#include <array>
#include <chrono>
#include <csignal>
#include <filesystem>
#include <functional>
#include <iterator>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include "call_exchange/modem/modem.h"
#include "call_exchange/options.h"
#include "call_exchange/processes.h"
#include "call_exchange/scenarios.h"

namespace example {
namespace {

using std::chrono::milliseconds;
using std::string_literals::operator""s;
using ::testing::AllOf;
using ::testing::ElementsAre;
using ::testing::EndsWith;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;
using ::testing::ThrowsMessage;

// Long enough never to run out on a busy machine: a test in which it does has found a hang.
constexpr milliseconds kNoHang{20'000};
constexpr milliseconds kShort{50};

class Notes : public Log {
 public:
  // Kills the process at its message number `last`, counted from 1 in both directions.
  explicit Notes(int last = 0) : left_(last) {}

  void Passed(Direction, const Frame& frame, const MessageLite* message) override {
    if (--left_ == 0) raise(SIGKILL);
    if (message == nullptr) Note("ignored: " + std::string(frame.type));
  }
  void Note(const std::string& text) override { all.push_back(text); }

  std::vector<std::string> all;

 private:
  int left_;
};

// Both sides with all scenarios; killed at that message, 0 for never.
Side TelephonyKilledAt(int message) {
  return [message](int socket) {
    const std::unique_ptr<std::FILE, int (*)(std::FILE*)> nowhere(std::fopen("/dev/null", "w"),
                                                                  &std::fclose);
    Timeline timeline(nowhere.get(), {});
    Notes notes(message);
    Endpoint endpoint(socket, Direction::kToModem, kNoHang, notes);
    Telephony telephony(endpoint, timeline, kNoHang, {});
    for (const Scenario& scenario : kScenarios) scenario.play(telephony);
  };
}

Side ModemKilledAt(int message) {
  return [message](int socket) {
    Notes notes(message);
    Endpoint endpoint(socket, Direction::kToTelephony, kNoHang, notes);
    Modem(endpoint).Serve(kNoHang);
  };
}

const Side kTelephony = TelephonyKilledAt(0);
const Side kModem = ModemKilledAt(0);

class ExchangeTest : public ::testing::Test {
 protected:
  static std::ptrdiff_t OpenDescriptors() {
    return std::distance(std::filesystem::directory_iterator("/proc/self/fd"), {});
  }

  void TearDown() override {
    EXPECT_EQ(OpenDescriptors(), descriptors_);
    EXPECT_EQ(waitpid(-1, nullptr, WNOHANG), -1) << "a child is left";
  }

  // What the sides write to standard error; at least one of them must fail.
  static std::string Errors(const Side& stays, const Side& child, int kind = SOCK_SEQPACKET,
                            milliseconds timeout = kNoHang) {
    ::testing::internal::CaptureStderr();
    EXPECT_EQ(RunPair(stays, child, kind, timeout), 1);
    return ::testing::internal::GetCapturedStderr();
  }

 private:
  std::ptrdiff_t descriptors_ = OpenDescriptors();
};

TEST_F(ExchangeTest, EitherSideKilledAtEveryStep) {
  constexpr int kMessages = 62;
  int lost_calls = 0;
  for (int step = 1; step <= kMessages; ++step) {
    const int kind = step % 2 == 0 ? SOCK_SEQPACKET : SOCK_STREAM;
    std::string errors = Errors(kTelephony, ModemKilledAt(step), kind);
    EXPECT_THAT(errors, EndsWith("modem was ended by signal 9\n")) << step;
    EXPECT_THAT(errors, AllOf(HasSubstr("telephony: "), HasSubstr(": the other side closed it\n")))
        << step;
    // The sides change places: the modem side is the one that stays and is looked at.
    errors = Errors(kModem, TelephonyKilledAt(step), kind);
    EXPECT_THAT(errors, EndsWith("modem was ended by signal 9\n")) << step;
    EXPECT_THAT(errors, Not(HasSubstr("sent nothing"))) << step;
    if (errors.find("the telephony side is gone during a call\n") != std::string::npos) {
      ++lost_calls;
    }
  }
  EXPECT_GT(lost_calls, 0);
  EXPECT_LT(lost_calls, kMessages);
}

// One end of a pair of sockets as it is, and an endpoint at the other.
struct Link {
  explicit Link(int kind = SOCK_SEQPACKET, milliseconds patience = kNoHang) {
    std::array<int, 2> sockets{};
    EXPECT_EQ(socketpair(AF_UNIX, kind, 0, sockets.data()), 0);
    raw = sockets[0];
    endpoint_socket = sockets[1];
    endpoint.emplace(sockets[1], Direction::kToModem, patience, notes);
  }
  ~Link() { close(raw); }
  void Write(std::string_view bytes) const {
    EXPECT_EQ(send(raw, bytes.data(), bytes.size(), 0), static_cast<ssize_t>(bytes.size()));
  }
  std::string Receive() {
    const auto received = endpoint->Receive(Clock::now() + kShort);
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

TEST_F(ExchangeTest, WhatIsNoFrameEndsTheConnection) {
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
TEST_F(ExchangeTest, PassesOverWhatItCannotRead) {
  for (const int kind : {SOCK_SEQPACKET, SOCK_STREAM}) {
    Link link(kind);
    const std::string bytes =
        FrameOf("Dail", "") + FrameOf("Dial", "\x1a\x7f") + FrameOf("Hangup", "\x08\x01");
    const std::size_t piece = kind == SOCK_STREAM ? 1 : bytes.size();
    for (std::size_t at = 0; at < bytes.size(); at += piece) {
      EXPECT_EQ(link.Receive(), "");
      link.Write(bytes.substr(at, piece));
    }
    EXPECT_EQ(link.Receive(), "Hangup");
    EXPECT_THAT(link.notes.all, ElementsAre("ignored: Dail", "ignored: Dial"));
  }
}

TEST_F(ExchangeTest, PeerThatIsGoneOrTakesNothing) {
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
  Notes notes;
  Endpoint file(open("/dev/null", O_RDWR), Direction::kToModem, kNoHang, notes);
  EXPECT_FALSE(file.Send(Dial()));
  EXPECT_EQ(file.why_ended(), "Socket operation on non-socket");
}

TEST_F(ExchangeTest, StreamTakesAMessageInPieces) {
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
TEST_F(ExchangeTest, WaitUnderSignals) {
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

TEST_F(ExchangeTest, SeveralRequestsExpireAtOnce) {
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

using Change = std::function<void(MessageLite&)>;

// Changes messages of the type, and no others.
template <typename M>
Change In(void (*change)(M&)) {
  return [change](MessageLite& message) {
    if (M* found = virtual_modem::As<M>(message)) change(*found);
  };
}

// The answers of a modem in this process to one message.
class AnswersOf {
 public:
  AnswersOf()
      : modem_(*link_.endpoint), client_(dup(link_.raw), Direction::kToModem, kNoHang, notes_) {}

  std::vector<Endpoint::Received> To(const MessageLite& message,
                                     Operation operation = Operation::kByType) {
    EXPECT_TRUE(client_.Send(message, operation));
    modem_.Take(*link_.endpoint->Receive(Clock::now() + kNoHang));
    std::vector<Endpoint::Received> answers;
    while (auto answer = client_.Receive(Clock::now())) answers.push_back(std::move(*answer));
    return answers;
  }

 private:
  Notes notes_;
  Link link_;
  Modem modem_;
  Endpoint client_;
};

// The modem, but what it sends is changed in transit.
Side ModemWith(const Change& change) {
  return [change](int socket) {
    Notes notes;
    Endpoint telephony(socket, Direction::kToTelephony, kNoHang, notes);
    AnswersOf modem;
    while (const auto request = telephony.Receive(Clock::now() + kNoHang)) {
      for (const auto& answer : modem.To(*request->message, request->operation)) {
        change(*answer.message);
        telephony.Send(*answer.message, answer.operation);
      }
    }
  };
}

TEST_F(ExchangeTest, TelephonySaysWhatIsWrongWithAnAnswer) {
  const struct {
    Change change;
    const char* error;
  } faults[] = {
      {In<RegistrationResponse>([](auto& m) { m.clear_regstate(); }),
       "no usable answer to NoParmRequest"},
      {In<NoResultResponse>([](auto& m) { m.set_error(RADIO_E_SIM_BUSY); }),
       "Dial ended with RADIO_E_SIM_BUSY"},
      {In<GetCurrentCallsResponse>([](auto& m) { m.clear_calls(); }),
       "the call is not RADIO_CALL_DIALING"},
      {In<VoiceRadioTechChanged>([](auto& m) { m.mutable_unknown_fields()->clear(); }),
       "a newer peer's message was changed in transit"},
      {In<CdmaSmsMessage>([](auto& m) { m.set_bearerdata(2, 0x20); }),
       "the incoming short message is not one that was delivered"},
      {In<CdmaSmsMessage>([](auto& m) { m.mutable_bearerdata()->Truncate(2); }),
       "the incoming short message is not one that was delivered"},
      {In<CdmaSmsMessage>([](auto& m) { m.clear_address(); }),
       "the CdmaSmsMessage received lacks a required field"},
      {In<ImsCallStateChanged>([](auto& m) { m.clear_calls(); }), "the call dialed is not listed"},
      {In<ImsCallStateChanged>([](auto& m) { m.mutable_calls(0)->set_callrat(CALL_RAT_LTE); }),
       "a call has not moved to Wi-Fi"},
      {In<HandoverInfo>([](auto& m) { m.set_type(VIR_START); }),
       "the handover is not at VIR_COMPLETE_SUCCESS"},
      {In<EconfResultIndication>([](auto& m) { m.set_joinedcallid("1"); }),
       "call 2 has not joined the conference"},
      {In<share::MasterSlaveShareConfirmRsp>([](auto& m) { m.set_result(false); }),
       "the slave declines the share"},
      {In<share::MasterSlaveNetworkInfoResp>([](auto& m) { m.set_value2(1); }),
       "the slave cannot use the network"},
      {In<share::SlaveMasterShareDataChange>([](auto& m) { m.set_result(false); }),
       "the slave is not connected"},
      {In<share::SlaveDeactivateDataCallRequest>([](auto& m) { m.set_value2(2); }),
       "the slave deactivates another data call"},
  };
  for (const auto& [change, error] : faults) {
    EXPECT_EQ(Errors(kTelephony, ModemWith(change)), "call_exchange: telephony: "s + error + '\n');
  }
}

template <typename Request>
Request Header(std::int32_t serial) {
  Request request;
  request.set_platformtype(QCOM);
  request.set_serial(serial);
  return request;
}

class ModemTest : public ExchangeTest {
 protected:
  // The one answer to the message.
  static std::unique_ptr<MessageLite> AnswerTo(const MessageLite& message) {
    auto answers = AnswersOf().To(message);
    EXPECT_EQ(answers.size(), 1U);
    return std::move(answers.at(0).message);
  }
};

template <typename Response>
Response SmsRefused(Radio_Errno error) {
  auto response = Header<Response>(8);
  response.set_error(error);
  SmsResult& result = *response.mutable_result();
  result.set_messageref(0);
  result.set_ackpdu("");
  result.set_errorcode(0);
  return response;
}

TEST_F(ModemTest, RefusesInTheResponseAwaited) {
  auto mute = Header<SetMute>(7);
  mute.set_enable(true);
  auto refused = Header<NoResultResponse>(7);
  refused.set_error(RADIO_E_REQUEST_NOT_SUPPORTED);
  EXPECT_EQ(*AnswerTo(mute), refused);

  const Radio_Errno incomplete = RADIO_E_INVALID_ARGUMENTS;
  EXPECT_EQ(*AnswerTo(Header<SendGSMSms>(8)), SmsRefused<SendGsmSmsResponse>(incomplete));
  EXPECT_EQ(*AnswerTo(Header<VirtualCdmaSmsMessage>(8)),
            SmsRefused<SendCdmaSmsResponse>(incomplete));
  auto sms = Header<ImsSmsMessage>(8);
  sms.set_retry(false);
  sms.set_messageref(0);
  sms.set_tech(THREE_GPP);
  const Radio_Errno empty = RADIO_E_INVALID_SMS_FORMAT;
  EXPECT_EQ(*AnswerTo(sms), SmsRefused<SendGsmSmsResponse>(empty));
  sms.set_tech(THREE_GPP2);
  EXPECT_EQ(*AnswerTo(sms), SmsRefused<SendCdmaSmsResponse>(empty));
}

// Else two such peers would answer each other for ever.
TEST_F(ModemTest, AnswersNoResponseAndNothingThatLacksItsSerial) {
  auto result = Header<NoResultResponse>(7);
  AnswersOf answers;
  EXPECT_THAT(answers.To(result), IsEmpty());
  result.set_error(RADIO_E_SUCCESS);
  EXPECT_THAT(answers.To(result), IsEmpty());
  EXPECT_THAT(answers.To(share::MasterSlaveShareConfirmRsp()), IsEmpty());
  EXPECT_THAT(answers.To(Dial()), IsEmpty());
  EXPECT_THAT(answers.To(SendGSMSms()), IsEmpty());
  NoResultIndication indication;
  indication.set_platformtype(MTK);
  EXPECT_EQ(*AnswerTo(indication), indication);
}

TEST_F(ModemTest, ACallLeftOverIsAnError) {
  for (const Operation kind : {Operation::kByType, Operation::kImsCall}) {
    Link link;
    {
      Notes notes;
      Endpoint client(dup(link.raw), Direction::kToModem, kNoHang, notes);
      auto dial = Header<Dial>(1);
      dial.set_address("112");
      dial.set_clir(CLIR_DEFAULT);
      EXPECT_TRUE(client.Send(dial, kind));
    }
    shutdown(link.raw, SHUT_WR);
    EXPECT_THAT([&] { Modem(*link.endpoint).Serve(kNoHang); },
                ThrowsMessage<std::runtime_error>("the telephony side is gone during a call"));
  }
}

TEST_F(ExchangeTest, SilenceAndFailureOfOneSide) {
  Link link;
  EXPECT_THAT([&] { Modem(*link.endpoint).Serve(kShort); },
              ThrowsMessage<std::runtime_error>("the telephony side sent nothing"));
  Timeline timeline(stdout, {});
  Telephony telephony(*link.endpoint, timeline, kShort, {});
  EXPECT_THAT([&] { telephony.Expect<Dial>(); },
              ThrowsMessage<std::runtime_error>("the modem sent nothing"));
  link.Write(FrameOf("Hangup", "\x08\x01"));
  EXPECT_THAT([&] { telephony.Expect<Dial>(); },
              ThrowsMessage<std::runtime_error>("awaited Dial, got Hangup"));

  const Side well = [](int socket) { close(socket); };
  EXPECT_EQ(Errors(
                well, [](int) { pause(); }, SOCK_STREAM, kShort),
            "call_exchange: modem does not end; killed\n"
            "call_exchange: modem was ended by signal 9\n");
  EXPECT_EQ(Errors(well, [](int) { throw std::runtime_error("lost"); }),
            "call_exchange: modem: lost\n");
}

TEST(OptionsTest, Timeout) {
  std::array<std::string, 3> words{"call_exchange", "--timeout", "50"};
  std::array<char*, 4> arguments{words[0].data(), words[1].data(), words[2].data(), nullptr};
  EXPECT_EQ(ParseOptions(3, arguments.data()).timeout, milliseconds(50));
}

}  // namespace
}  // namespace example
