// The example under fault: whatever the other side does, each side ends with a clear error or goes
// on as documented; none hangs, and no descriptor or child is left behind.
#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <sys/wait.h>
#include <unistd.h>
#include <virtual_modem/text.h>
#include <virtual_modem/types.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <iostream>
#include <map>
#include <memory>
#include <optional>
#include <random>
#include <string>
#include <vector>

#include "call_exchange/frame.h"
#include "call_exchange/modem/modem.h"
#include "call_exchange/processes.h"
#include "call_exchange/scenarios.h"
#include "virtual_modem/conference.pb.h"

namespace virtual_modem::exchange {
namespace {

using std::chrono::milliseconds;
using ::testing::ElementsAre;
using ::testing::EndsWith;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;
using std::string_literals::operator""s;

// Long enough never to run out on a busy machine: a test in which it does has found a hang.
constexpr milliseconds kNoHang{20'000};

std::string FrameOf(std::string_view type, std::string_view payload,
                    Operation operation = Operation::kByType) {
  std::string header(kFrameHeaderSize + kMaxTypeLength, '\xff');
  header.resize(WriteFrameHeader(operation, type, payload.size(),
                                 reinterpret_cast<std::uint8_t*>(header.data())));
  return header.append(payload);
}

void PlayAll(Channel channel, Observer observer = {}) {
  const std::unique_ptr<std::FILE, int (*)(std::FILE*)> nowhere(std::fopen("/dev/null", "w"),
                                                                &std::fclose);
  Timeline timeline(nowhere.get(), {});
  Endpoint endpoint(std::move(channel), std::move(observer));
  Telephony telephony(endpoint, timeline, {});
  for (const Scenario& scenario : kScenarios) scenario.play(telephony);
}

void ServeAll(Channel channel, Observer observer = {}) {
  Endpoint endpoint(std::move(channel), std::move(observer));
  Modem(endpoint).Serve();
}

// Kills the process at its frame number `last`, counted from 1 in both directions.
Observer KillAt(int last) {
  Observer observer;
  observer.on_frame = [last, count = 0](Direction, std::string_view) mutable {
    if (++count == last) raise(SIGKILL);
  };
  return observer;
}

// The frames of all scenarios, in the order in which they go by.
std::vector<std::string> RecordFrames() {
  std::vector<std::string> frames;
  Observer observer;
  observer.on_frame = [&frames](Direction, std::string_view bytes) { frames.emplace_back(bytes); };
  const Side telephony = [&observer](Channel channel) { PlayAll(std::move(channel), observer); };
  const Side modem = [](Channel channel) { ServeAll(std::move(channel)); };
  EXPECT_EQ(RunPair(telephony, modem, kNoHang), 0);
  return frames;
}

class ExchangeTest : public ::testing::Test {
 protected:
  static std::ptrdiff_t OpenDescriptors() {
    return std::distance(std::filesystem::directory_iterator("/proc/self/fd"), {});
  }

  void TearDown() override {
    EXPECT_EQ(OpenDescriptors(), descriptors_);
    EXPECT_EQ(waitpid(-1, nullptr, WNOHANG), -1) << "a child is left";
  }

 private:
  std::ptrdiff_t descriptors_ = OpenDescriptors();
};

TEST(FrameTest, RefusesWhatIsNotAFrame) {
  const std::string good = FrameOf("Dial", "payload", Operation::kImsCall);
  Frame frame;
  ASSERT_EQ(ReadFrame(good, frame), FrameFault::kNone);
  EXPECT_EQ(frame.type, "Dial");
  EXPECT_EQ(frame.payload, "payload");
  EXPECT_EQ(frame.operation, Operation::kImsCall);

  for (std::size_t size = 0; size < good.size(); ++size) {
    EXPECT_EQ(ReadFrame(good.substr(0, size), frame), FrameFault::kTruncated) << size;
  }
  EXPECT_EQ(ReadFrame(good + '\0', frame), FrameFault::kTrailing);
  EXPECT_EQ(ReadFrame("XM" + good.substr(2), frame), FrameFault::kNotAFrame);
  EXPECT_EQ(ReadFrame(FrameOf("", "payload"), frame), FrameFault::kBadType);
  EXPECT_EQ(ReadFrame(FrameOf("Di\033l", "payload"), frame), FrameFault::kBadType);
  std::string header = good;
  header[3] = 65;
  EXPECT_EQ(ReadFrame(header, frame), FrameFault::kBadType);

  const std::string largest(32768, '\xff');
  const std::string longest(64, 'x');
  const std::string full = FrameOf(longest, largest);
  ASSERT_EQ(ReadFrame(full, frame), FrameFault::kNone);
  EXPECT_EQ(frame.payload, largest);
  EXPECT_EQ(frame.type, longest);
  EXPECT_EQ(ReadFrame(FrameOf("Dial", largest + 'x'), frame), FrameFault::kTooLarge);
}

TEST_F(ExchangeTest, ModemKilledAtEveryStep) {
  const int frames = static_cast<int>(RecordFrames().size());
  ASSERT_GT(frames, 50);
  for (int step = 1; step <= frames; ++step) {
    ::testing::internal::CaptureStderr();
    const Side telephony = [](Channel channel) { PlayAll(std::move(channel)); };
    const Side modem = [step](Channel channel) { ServeAll(std::move(channel), KillAt(step)); };
    EXPECT_EQ(RunPair(telephony, modem, kNoHang), 1) << step;
    const std::string errors = ::testing::internal::GetCapturedStderr();
    EXPECT_THAT(errors, EndsWith("modem was ended by signal 9\n")) << step;
    // After its last answer nobody waits for the modem any more.
    if (step < frames) {
      EXPECT_THAT(errors, HasSubstr("telephony: the ")) << step;
    }
    EXPECT_THAT(errors, Not(HasSubstr("within"))) << step;
  }
}

// The sides change places here: the modem side is the one that stays and is looked at.
TEST_F(ExchangeTest, TelephonyKilledAtEveryStep) {
  const int frames = static_cast<int>(RecordFrames().size());
  int lost_calls = 0;
  for (int step = 1; step <= frames; ++step) {
    ::testing::internal::CaptureStderr();
    const Side modem = [](Channel channel) { ServeAll(std::move(channel)); };
    const Side telephony = [step](Channel channel) { PlayAll(std::move(channel), KillAt(step)); };
    EXPECT_EQ(RunPair(modem, telephony, kNoHang), 1) << step;
    const std::string errors = ::testing::internal::GetCapturedStderr();
    EXPECT_THAT(errors, Not(HasSubstr("within"))) << step;
    if (errors.find("the telephony side is gone during a call\n") != std::string::npos)
      ++lost_calls;
  }
  EXPECT_GT(lost_calls, 0);
  EXPECT_LT(lost_calls, frames);
}

// Whichever side gets a packet that must not be says why and ends; the sender of it sees the end.
TEST_F(ExchangeTest, FaultyPacketEndsEitherSide) {
  const std::string dial = FrameOf("Dial", "\x08\x01\x10\x01\x1a\x01\x31\x20\x00"s);
  const struct {
    std::string packet;
    const char* error;
  } faults[] = {
      {dial.substr(0, dial.size() / 2), "the frame is cut short"},
      {"noise", "the frame is cut short"},
      {"a longer noise", "the frame does not begin with 'VM'"},
      {dial + dial, "the frame has bytes after its payload"},
      {FrameOf("Dial", std::string(kMaxPayload + 1, '\0')), "the frame is larger than allowed"},
      {std::string(kMaxFrame + 1, 'V'), "bytes is larger than allowed"},
      {FrameOf("Dail", ""), "the frame names the unknown type 'Dail'"},
      {FrameOf("Dial\n", ""), "the frame has no valid type name"},
      {FrameOf("Dial", "\x1a\x7f"), "the payload is not a valid Dial"},
  };
  const Side sides[] = {[](Channel channel) { ServeAll(std::move(channel)); },
                        [](Channel channel) { PlayAll(std::move(channel)); }};
  for (const auto& [packet, error] : faults) {
    const Side sender = [&packet = packet](Channel channel) {
      channel.Send(reinterpret_cast<const std::uint8_t*>(packet.data()), packet.size());
      while (channel.Receive()) {
      }
    };
    for (const Side& side : sides) {
      ::testing::internal::CaptureStderr();
      EXPECT_EQ(RunPair(side, sender, kNoHang), 1) << error;
      const std::string errors = ::testing::internal::GetCapturedStderr();
      EXPECT_THAT(errors, EndsWith(std::string(error) + '\n'));
      EXPECT_EQ(std::count(errors.begin(), errors.end(), '\n'), 1) << errors;
    }
  }
}

// A sound message in the wrong place: the modem declines it, the telephony side cannot go on.
TEST_F(ExchangeTest, UnexpectedMessage) {
  const Side wrong_type = [](Channel channel) {
    Endpoint endpoint(std::move(channel));
    endpoint.Send(endpoint.Draft<NoResultIndication>());
    while (endpoint.Receive()) {
    }
  };
  ::testing::internal::CaptureStderr();
  EXPECT_EQ(RunPair([](Channel channel) { PlayAll(std::move(channel)); }, wrong_type, kNoHang), 1);
  EXPECT_THAT(::testing::internal::GetCapturedStderr(),
              HasSubstr("awaited RegistrationResponse, got NoResultIndication"));

  const Side wrong_serial = [](Channel channel) {
    Endpoint endpoint(std::move(channel));
    endpoint.Receive();
    auto& response = endpoint.Draft<RegistrationResponse>();
    response.set_platformtype(QCOM);
    response.set_serial(2);
    response.set_error(RADIO_E_SUCCESS);
    response.set_regstate(RADIO_REG_HOME);
    response.set_rat(RADIO_T_LTE);
    response.mutable_cellidentity()->set_cellinfotype(RADIO_CELL_TYPE_NONE);
    response.set_registeredplmn("");
    endpoint.Send(response);
    while (endpoint.Receive()) {
    }
  };
  ::testing::internal::CaptureStderr();
  EXPECT_EQ(RunPair([](Channel channel) { PlayAll(std::move(channel)); }, wrong_serial, kNoHang),
            1);
  EXPECT_THAT(::testing::internal::GetCapturedStderr(),
              HasSubstr("awaited the answer to #1, got that to #2"));
}

using Change = std::function<void(MessageLite&)>;

// Changes messages of the type, and no others.
template <typename M>
Change In(void (*change)(M&)) {
  return [change](MessageLite& message) {
    if (&TypeOf(message) == &TypeOf(M::default_instance())) change(static_cast<M&>(message));
  };
}

// The modem, but what it sends is changed on its way.
Side ModemWith(const Change& change) {
  return [change](Channel channel) {
    Endpoint telephony(std::move(channel));
    auto [here, there] = Channel::Pair(kNoHang);
    Endpoint client(std::move(here));
    Endpoint server(std::move(there));
    Modem modem(server);
    while (const auto request = telephony.Receive()) {
      client.Send(request->message, request->frame.operation);
      modem.ServeOne();
      server.Send(server.Draft<Version>());  // marks the end
      for (;;) {
        const auto answer = client.Receive();
        if (answer->frame.type == "Version") break;
        change(const_cast<MessageLite&>(answer->message));
        telephony.Send(answer->message, answer->frame.operation);
      }
    }
  };
}

TEST_F(ExchangeTest, TelephonySaysWhatIsWrongWithAnAnswer) {
  namespace share = ::virtualdata::proto;
  const struct {
    Change change;
    const char* error;
  } faults[] = {
      {In<RegistrationResponse>([](auto& m) { m.clear_regstate(); }),
       "the RegistrationResponse received lacks a required field"},
      {In<NoResultResponse>([](auto& m) { m.set_error(RADIO_E_SIM_BUSY); }),
       "request #3 ended with RADIO_E_SIM_BUSY"},
      {In<GetCurrentCallsResponse>([](auto& m) { m.clear_calls(); }),
       "the call is not RADIO_CALL_DIALING"},
      {In<VoiceRadioTechChanged>([](auto& m) { m.mutable_unknown_fields()->clear(); }),
       "a newer peer's message was changed on its way"},
      {In<VirtualCdmaSmsMessage>([](auto& m) { m.set_bearerdata(2, 0x20); }),
       "the incoming short message is not one that was delivered"},
      {In<VirtualCdmaSmsMessage>([](auto& m) { m.mutable_bearerdata()->Truncate(2); }),
       "the incoming short message is not one that was delivered"},
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
  const Side telephony = [](Channel channel) { PlayAll(std::move(channel)); };
  for (const auto& [change, error] : faults) {
    ::testing::internal::CaptureStderr();
    EXPECT_EQ(RunPair(telephony, ModemWith(change), kNoHang), 1) << error;
    EXPECT_THAT(::testing::internal::GetCapturedStderr(),
                HasSubstr(std::string("telephony: ") + error + '\n'));
  }
}

TEST_F(ExchangeTest, NumbersOfTheOperations) {
  std::map<int, std::string_view> operations;
  for (const std::string& frame : RecordFrames()) {
    operations[frame[2]] = OperationName(static_cast<Operation>(frame[2]));
  }
  const std::map<int, std::string_view> expected = {{0, ""},
                                                    {1, "registration"},
                                                    {2, "operator"},
                                                    {3, "current calls"},
                                                    {4, "call state changed"},
                                                    {5, "last call failure cause"},
                                                    {6, "card status"},
                                                    {7, "signal strength"},
                                                    {8, "IMS call"},
                                                    {9, "merge into a conference"}};
  EXPECT_EQ(operations, expected);
}

// A modem and the link to it, in this process.
class ModemTest : public ExchangeTest {
 protected:
  // A request whose header is filled.
  template <typename Request>
  Request& Draft(std::int32_t serial) {
    auto& request = client_->Draft<Request>();
    request.set_platformtype(QCOM);
    request.set_serial(serial);
    return request;
  }

  // What the modem sends when it gets the message.
  std::vector<std::string> Serve(const MessageLite& message,
                                 Operation operation = Operation::kByType) {
    client_->Send(message, operation);
    EXPECT_TRUE(modem_->ServeOne());
    server_->Send(server_->Draft<Version>());  // marks the end
    std::vector<std::string> answers;
    for (;;) {
      const auto received = client_->Receive();
      if (received->frame.type == "Version") return answers;
      answers.push_back(std::string(received->frame.type) + " { " +
                        ToText(received->message, {true}) + " }");
    }
  }

  void SetUp() override {
    auto [here, there] = Channel::Pair(kNoHang);
    client_.emplace(std::move(here));
    server_.emplace(std::move(there));
    modem_.emplace(*server_);
  }

  void TearDown() override {
    modem_.reset();
    client_.reset();
    server_.reset();
    ExchangeTest::TearDown();
  }

 private:
  std::optional<Endpoint> client_;
  std::optional<Endpoint> server_;
  std::optional<Modem> modem_;
};

TEST_F(ModemTest, RefusesInTheResponseAwaited) {
  auto& mute = Draft<SetMute>(7);
  mute.set_enable(true);
  EXPECT_THAT(Serve(mute), ElementsAre("NoResultResponse { platformtype: QCOM serial: 7 "
                                       "error: RADIO_E_REQUEST_NOT_SUPPORTED }"));
  const std::string result = " result { messageref: 0 ackpdu: \"\" errorcode: 0 } }";
  const std::string incomplete = " error: RADIO_E_INVALID_ARGUMENTS" + result;
  EXPECT_THAT(Serve(Draft<SendGSMSms>(8)),
              ElementsAre("SendGsmSmsResponse { platformtype: QCOM serial: 8" + incomplete));
  EXPECT_THAT(Serve(Draft<VirtualCdmaSmsMessage>(9)),
              ElementsAre("SendCdmaSmsResponse { platformtype: QCOM serial: 9" + incomplete));
  auto& sms = Draft<ImsSmsMessage>(10);
  sms.set_retry(false);
  sms.set_messageref(0);
  const std::string empty = " error: RADIO_E_INVALID_SMS_FORMAT" + result;
  sms.set_tech(THREE_GPP);
  EXPECT_THAT(Serve(sms),
              ElementsAre("SendGsmSmsResponse { platformtype: QCOM serial: 10" + empty));
  sms.set_tech(THREE_GPP2);
  EXPECT_THAT(Serve(sms),
              ElementsAre("SendCdmaSmsResponse { platformtype: QCOM serial: 10" + empty));
}

// Else two such peers would answer each other for ever.
TEST_F(ModemTest, AnswersNoResponseAndNothingThatLacksItsSerial) {
  EXPECT_THAT(Serve(Draft<BoolResultResponse>(7)), IsEmpty());
  auto& result = Draft<NoResultResponse>(7);
  result.set_error(RADIO_E_SUCCESS);
  EXPECT_THAT(Serve(result), IsEmpty());
  EXPECT_THAT(Serve(::virtualdata::proto::MasterSlaveShareConfirmRsp()), IsEmpty());
  EXPECT_THAT(Serve(Dial()), IsEmpty());
  EXPECT_THAT(Serve(SendGSMSms()), IsEmpty());
  EXPECT_THAT(Serve(ImsSmsMessage()), IsEmpty());
  EXPECT_THAT(Serve(VirtualCdmaSmsMessage()), IsEmpty());
  NoResultIndication indication;
  indication.set_platformtype(MTK);
  EXPECT_THAT(Serve(indication), ElementsAre("NoResultIndication { platformtype: MTK }"));
}

TEST_F(ModemTest, TakesSevenCallsOfEachKind) {
  for (const Operation kind : {Operation::kByType, Operation::kImsCall}) {
    for (int serial = 1; serial <= 8; ++serial) {
      auto& dial = Draft<Dial>(serial);
      dial.set_address("112");
      dial.set_clir(CLIR_DEFAULT);
      EXPECT_THAT(Serve(dial, kind).front(),
                  HasSubstr(serial <= 7 ? "RADIO_E_SUCCESS" : "RADIO_E_NO_RESOURCES"))
          << serial;
    }
  }
}

// A peer that is there and does nothing.
TEST_F(ExchangeTest, SilentPeer) {
  constexpr milliseconds kShort{50};
  auto [here, there] = Channel::Pair(kShort);
  EXPECT_THAT([&here = here] { here.Receive(); },
              ::testing::ThrowsMessage<LinkError>("the peer sent nothing within 50 ms"));
  Endpoint endpoint(std::move(there));
  EXPECT_THAT(
      [&endpoint] {
        for (;;) endpoint.Send(endpoint.Draft<Dial>());
      },
      ::testing::ThrowsMessage<LinkError>("the peer took nothing within 50 ms"));

  ::testing::internal::CaptureStderr();
  const Side stuck = [](Channel) { pause(); };
  EXPECT_EQ(RunPair([](Channel) {}, stuck, kShort), 1);
  EXPECT_EQ(::testing::internal::GetCapturedStderr(),
            "call_exchange: modem does not end; killed\n"
            "call_exchange: modem was ended by signal 9\n");
}

TEST_F(ExchangeTest, FailureOfTheModemAloneIsAFailure) {
  ::testing::internal::CaptureStderr();
  EXPECT_EQ(RunPair([](Channel) {}, [](Channel) { throw LinkError("lost"); }, kNoHang), 1);
  EXPECT_EQ(::testing::internal::GetCapturedStderr(), "call_exchange: modem: lost\n");
}

// Of the two kinds of sockets it is the stream that raises a signal.
TEST_F(ExchangeTest, SendToAPeerThatIsGone) {
  const auto before = std::signal(SIGPIPE, SIG_DFL);  // whatever the caller of the test ignores
  for (const int kind : {SOCK_SEQPACKET, SOCK_STREAM}) {
    std::array<int, 2> fds{};
    ASSERT_EQ(socketpair(AF_UNIX, kind | SOCK_NONBLOCK, 0, fds.data()), 0);
    Channel channel(fds[0], kNoHang);
    close(fds[1]);
    const std::uint8_t byte = 0;
    EXPECT_THAT([&] { channel.Send(&byte, 1); },
                ::testing::ThrowsMessage<LinkError>("the peer is gone"));
  }
  std::signal(SIGPIPE, before);
}

TEST_F(ExchangeTest, DescriptorThatIsNoSocket) {
  Channel channel(open("/dev/null", O_RDWR), kNoHang);
  const std::uint8_t byte = 0;
  EXPECT_THAT([&] { channel.Send(&byte, 1); },
              ::testing::ThrowsMessage<LinkError>("send: Socket operation on non-socket"));
  EXPECT_THAT([&] { channel.Receive(); },
              ::testing::ThrowsMessage<LinkError>("recv: Socket operation on non-socket"));
}

// Signals neither end a wait nor lengthen it.
TEST_F(ExchangeTest, WaitUnderSignals) {
  struct sigaction before {};
  struct sigaction ignore {};
  ignore.sa_handler = [](int) {};
  sigaction(SIGALRM, &ignore, &before);
  const itimerval often{{0, 1000}, {0, 1000}};
  setitimer(ITIMER_REAL, &often, nullptr);
  auto [here, there] = Channel::Pair(milliseconds(50));
  EXPECT_THAT([&here = here] { here.Receive(); },
              ::testing::ThrowsMessage<LinkError>("the peer sent nothing within 50 ms"));
  const itimerval never{};
  setitimer(ITIMER_REAL, &never, nullptr);
  sigaction(SIGALRM, &before, nullptr);
}

// Random packets, near misses and sound messages, to each side in turn. VIRTUAL_MODEM_NOISE_SECONDS
// sets how long (default 1), VIRTUAL_MODEM_NOISE_SEED repeats a run.
class Noise {
 public:
  Noise(unsigned seed, std::vector<std::string> frames)
      : random_(seed), frames_(std::move(frames)) {}

  std::string Packet() {
    std::string packet = frames_[Below(frames_.size())];
    switch (Below(12)) {
      case 0:  // nothing but noise
        packet.assign(1 + Below(200), '\0');
        for (char& byte : packet) byte = RandomByte();
        break;
      case 1:  // a few bytes changed
        for (std::size_t left = 1 + Below(4); left > 0; --left) {
          packet[Below(packet.size())] = RandomByte();
        }
        break;
      case 2: {  // a sound frame of noise
        Frame frame;
        ReadFrame(packet, frame);
        std::string payload(Below(100), '\0');
        for (char& byte : payload) byte = RandomByte();
        packet = FrameOf(frame.type, payload, static_cast<Operation>(Below(12)));
        break;
      }
      default:  // a sound message, often out of place
        break;
    }
    return packet;
  }

  std::size_t Below(std::size_t limit) {
    return std::uniform_int_distribution<std::size_t>(0, limit - 1)(random_);
  }

 private:
  char RandomByte() { return static_cast<char>(Below(256)); }

  std::mt19937 random_;
  std::vector<std::string> frames_;
};

TEST_F(ExchangeTest, RandomBytes) {
  const auto setting = [](const char* name, unsigned fallback) {
    const char* text = std::getenv(name);
    return text == nullptr ? fallback : static_cast<unsigned>(std::stoul(text));
  };
  const unsigned seed = setting("VIRTUAL_MODEM_NOISE_SEED", std::random_device{}());
  const std::chrono::seconds duration(setting("VIRTUAL_MODEM_NOISE_SECONDS", 1));
  std::cout << "VIRTUAL_MODEM_NOISE_SEED=" << seed << '\n';
  Noise noise(seed, RecordFrames());

  std::size_t packets = 0;
  std::size_t messages = 0;
  std::size_t sessions = 0;
  const Observer count{{}, [&messages](Direction direction, const Frame&, const MessageLite&) {
                         if (direction == Direction::kReceived) ++messages;
                       }};
  const auto stop = std::chrono::steady_clock::now() + duration;
  while (std::chrono::steady_clock::now() < stop) {
    std::array<int, 2> fds{};
    ASSERT_EQ(socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_NONBLOCK, 0, fds.data()), 0);
    Channel sender(fds[0], kNoHang);
    Endpoint receiver(Channel(fds[1], kNoHang), count);
    for (int burst = 0; burst < 20; ++burst, ++packets) {
      const std::string packet = noise.Packet();
      sender.Send(reinterpret_cast<const std::uint8_t*>(packet.data()), packet.size());
    }
    shutdown(fds[0], SHUT_WR);
    try {
      if (noise.Below(2) == 0) {
        Modem(receiver).Serve();
      } else {
        Timeline timeline(stdout, {});
        Telephony telephony(receiver, timeline, {});
        kScenarios[noise.Below(kScenarios.size())].play(telephony);
      }
    } catch (const LinkError&) {  // as documented
    }
    ++sessions;
  }
  std::cout << sessions << " sessions, " << packets << " packets sent, " << messages
            << " taken as messages\n";
  EXPECT_GT(messages, sessions / 10);  // or the noise would not get past the frame
}

}  // namespace
}  // namespace virtual_modem::exchange
