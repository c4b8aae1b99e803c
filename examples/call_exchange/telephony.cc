#include "call_exchange/telephony.h"

#include <virtual_modem/conference.pb.h>
#include <virtual_modem/data_share.pb.h>
#include <virtual_modem/ims_service.pb.h>

#include <stdexcept>
#include <utility>

namespace example {

Telephony::Telephony(Endpoint& endpoint, Log& log, std::chrono::milliseconds timeout)
    : endpoint_(endpoint), log_(log), timeout_(timeout), client_(endpoint, log, timeout) {
  client_.OnNews([this](Operation /*operation*/, const MessageLite& message) {
    news_.emplace_back(message.New())->CheckTypeAndMergeFrom(message);
  });
}

std::unique_ptr<MessageLite> Telephony::Next() {
  client_.Run([this] { return !news_.empty(); }, Clock::now() + timeout_);
  Require(!news_.empty(), "the modem sent nothing");
  auto message = std::move(news_.front());
  news_.pop_front();
  return message;
}

void Telephony::Require(bool met, const std::string& what_is_wrong) const {
  if (met) return;
  throw std::runtime_error(endpoint_.connected() ? what_is_wrong
                                                 : what_is_wrong + ": " + endpoint_.why_ended());
}

namespace {

namespace share = ::virtualdata::proto;

constexpr const char* kNumber = "+861012345678";
constexpr const char* kSecondNumber = "+861087654321";

// ---- A call, and messages that cannot be used or are not wholly known ---------------------------

Dial DialTo(const std::string& number) {
  Dial dial;
  dial.set_address(number);
  dial.set_clir(CLIR_DEFAULT);
  return dial;
}

void DialAndHangUp(Telephony& telephony) {
  telephony.Ask<NoResultResponse>(DialTo(kNumber));

  GetCurrentCallsResponse calls;
  for (const RadioCallState state : {RADIO_CALL_DIALING, RADIO_CALL_ALERTING, RADIO_CALL_ACTIVE}) {
    calls = telephony.Ask<GetCurrentCallsResponse>(Operation::kCurrentCalls);
    telephony.Require(calls.calls_size() == 1 && calls.calls(0).state() == state,
                      "the call is not " + RadioCallState_Name(state));
    if (state != RADIO_CALL_ACTIVE) telephony.Expect<NoResultIndication>();
  }

  Hangup hangup;
  hangup.set_gsmindex(calls.calls(0).index());
  telephony.Ask<NoResultResponse>(hangup);
  telephony.Ask<LastCallFailureCauseResponse>(Operation::kLastCallFailCause);
}

// A request that lacks a required field is refused by an answer, not by a crash.
void DialNobody(Telephony& telephony) {
  Dial dial;
  dial.set_clir(CLIR_DEFAULT);
  telephony.Ask<NoResultResponse>(dial, Operation::kByType, RADIO_E_INVALID_ARGUMENTS);
}

// A message of a peer that is newer than this library: a technology that is not declared and a
// field that does not exist here. The modem side passes on what it does not know unchanged.
void MeetNewerPeer(Telephony& telephony) {
  const std::string bytes =
      "\x08\x01"           // 1 platformtype: QCOM
      "\x10\x63"           // 2 technology: 99
      "\x7a\x02\x36\x47";  // 15, a string: 6G
  VoiceRadioTechChanged indication;
  telephony.Require(indication.ParsePartialFromString(bytes), "the message does not parse");
  telephony.Send(indication);
  const std::string returned =
      telephony.Expect<VoiceRadioTechChanged>(true).SerializePartialAsString();
  telephony.Require(returned == bytes, "a newer peer's message was changed in transit");
  telephony.Note("technology 99 and field 15 are unknown here: all " +
                 std::to_string(bytes.size()) + " bytes came back as they were sent");
}

void PlayCall(Telephony& telephony) {
  telephony.Ask<RegistrationResponse>(Operation::kRegistration);
  telephony.Ask<OperatorResponse>(Operation::kOperator);
  DialAndHangUp(telephony);
  DialNobody(telephony);
  MeetNewerPeer(telephony);
}

// ---- What the telephony side asks for when it starts --------------------------------------------

void PlayStatus(Telephony& telephony) {
  telephony.Ask<IccCardStatusResponse>(Operation::kCardStatus);
  telephony.Ask<GetSignalStrengthResponse>(Operation::kSignalStrength);
}

// ---- Short messages -----------------------------------------------------------------------------

// One over GSM; one over IMS in CDMA form, whose reply comes in and is acknowledged.

void SendOverGsm(Telephony& telephony) {
  SendGSMSms sms;
  sms.set_smscpdu("00");  // the service center that the SIM names
  // SMS-SUBMIT, reference 0, to kNumber (12 digits, international, the halves of each byte
  // swapped), protocol 0, default alphabet, 5 characters "hello" (TS 23.040 9.2.2.2).
  sms.set_pdu("01000C91680121436587000005E8329BFD06");
  telephony.Ask<SendGsmSmsResponse>(sms);
}

void SendCdmaOverIms(Telephony& telephony) {
  ImsSmsMessage sms;
  sms.set_tech(THREE_GPP2);
  sms.set_retry(false);
  sms.set_messageref(0);
  CdmaSmsMessage& message = *sms.mutable_cdmamessage();
  message.set_teleserviceid(0x1002);  // wireless messaging (3GPP2 C.S0015)
  message.set_isservicepresent(false);
  message.set_servicecategory(0);
  CdmaSmsAddress& address = *message.mutable_address();
  address.set_digitmode(DIGIT_MODE_EIGHT_BIT);
  address.set_isnumbermodedatanetwork(false);
  address.set_numbertype(NUMBER_TYPE_INTERNATIONAL_OR_DATA_IP);
  address.set_numberplan(NUMBER_PLAN_TELEPHONY);
  for (const char digit : std::string_view(kNumber).substr(1)) address.add_digits(digit);
  message.mutable_subaddress()->set_subaddresstype(SUBADDRESS_TYPE_NSAP);
  message.mutable_subaddress()->set_odd(false);
  // Message identifier (submit, number 1) and user data: "hi" in 8-bit octets (3GPP2 C.S0015 4.5).
  for (const int byte : {0x00, 0x03, 0x20, 0x00, 0x10, 0x01, 0x04, 0x00, 0x13, 0x43, 0x48}) {
    message.add_bearerdata(byte);
  }
  telephony.Ask<SendCdmaSmsResponse>(sms);
}

void PlaySms(Telephony& telephony) {
  SendOverGsm(telephony);
  SendCdmaOverIms(telephony);
  telephony.Expect<CdmaSmsMessage>();
  CdmaSmsAck ack;
  ack.set_errorclass(NO_ERROR);
  ack.set_smscausecode(0);
  telephony.Ask<NoResultResponse>(ack);
}

// ---- An IMS call that moves from LTE to Wi-Fi, then merges with a second one --------------------

int DialIms(Telephony& telephony, const std::string& number) {
  telephony.Ask<NoResultResponse>(DialTo(number), Operation::kImsCall);
  const auto calls = telephony.Expect<ImsCallStateChanged>();
  telephony.Require(!calls.calls().empty(), "the call dialed is not listed");
  return calls.calls().rbegin()->index();
}

void FollowHandover(Telephony& telephony) {
  for (const QtiHandoverType phase : {VIR_START, VIR_COMPLETE_SUCCESS}) {
    // A plain int32 on the wire: any number may arrive.
    telephony.Require(telephony.Expect<HandoverInfo>().type() == phase,
                      "the handover is not at " + QtiHandoverType_Name(phase));
  }
  const auto calls = telephony.Expect<ImsCallStateChanged>();
  for (const QImsCall& call : calls.calls()) {
    telephony.Require(call.callrat() == CALL_RAT_WIFI, "a call has not moved to Wi-Fi");
  }
}

void Merge(Telephony& telephony, int joined) {
  telephony.Ask<NoResultResponse>(Operation::kConference);
  telephony.Require(
      telephony.Expect<EconfResultIndication>().joinedcallid() == std::to_string(joined),
      "call " + std::to_string(joined) + " has not joined the conference");
  telephony.Expect<ImsConferenceParticipants>();
  telephony.Expect<ImsCallStateChanged>();
}

void PlayIms(Telephony& telephony) {
  const int first = DialIms(telephony, kNumber);
  FollowHandover(telephony);
  const int second = DialIms(telephony, kSecondNumber);
  Merge(telephony, second);
  for (const int index : {first, second}) {
    Hangup hangup;
    hangup.set_gsmindex(index);
    telephony.Ask<NoResultResponse>(hangup, Operation::kImsCall);
    telephony.Expect<ImsCallStateChanged>();
  }
}

// ---- Data sharing -------------------------------------------------------------------------------

// This side plays the master, which shares its data connection with a slave until it takes it back.
// The fields are numbered, not named: two devices agree on their meaning. Agreed here: value1 is
// the share; the three lists are addresses, DNS servers and gateways; the rest is said where it is
// set.

constexpr int kShare = 1;
constexpr int kDataCall = 1;
constexpr int kMtu = 1420;
constexpr const char* kAddress = "192.0.2.17/24";
constexpr const char* kDns = "192.0.2.53";
constexpr const char* kGateway = "192.0.2.1";

void Offer(Telephony& master) {
  share::MasterSlaveShareConfirmReq request;
  request.set_value(kShare);
  master.Send(request);
  master.Require(master.Expect<share::MasterSlaveShareConfirmRsp>().result(),
                 "the slave declines the share");

  share::MasterSlaveNetworkInfoUpdate network;
  network.set_value1(kShare);
  network.add_list2(kAddress);
  network.add_list3(kDns);
  network.add_list4(kGateway);
  network.set_value5(kMtu);
  network.set_text6("internet");  // APN
  network.set_value7(RADIO_T_LTE);
  master.Send(network);
  master.Require(master.Expect<share::MasterSlaveNetworkInfoResp>().value2() == 0,
                 "the slave cannot use the network");
}

void SetUpDataCall(Telephony& master) {
  const auto request = master.Expect<share::SlaveSetupDataCallRequest>();
  share::SlaveSetupDataCallResponse response;
  response.set_value1(request.value1());
  response.set_value2(0);   // set up
  response.set_value3(-1);  // no retry needed
  response.set_value4(kDataCall);
  response.set_value5(2);                 // active
  response.set_value6(request.value2());  // profile
  response.set_value7(kMtu);
  response.add_list8(kAddress);
  response.add_list9(kDns);
  response.add_list10(kGateway);
  response.set_value11(0);
  response.set_value12(0);
  master.Send(response);
  master.Require(master.Expect<share::SlaveMasterShareDataChange>().result(),
                 "the slave is not connected");
}

void PlayDataShare(Telephony& master) {
  Offer(master);
  SetUpDataCall(master);
  share::RemoteDataShareReleaseReq release;
  release.set_value1(kShare);
  release.set_value2(0);  // no fault
  master.Send(release);
  master.Require(master.Expect<share::SlaveDeactivateDataCallRequest>().value2() == kDataCall,
                 "the slave deactivates another data call");
}

}  // namespace

const std::array<Scenario, 5> kScenarios{{
    {"call", "register, dial, talk, hang up; a bad request; a newer peer", PlayCall},
    {"status", "the SIM card and the signal", PlayStatus},
    {"sms", "a GSM message; a CDMA message over IMS, its reply acknowledged", PlaySms},
    {"ims", "an IMS call moves from LTE to Wi-Fi; a conference", PlayIms},
    {"data-share", "a master shares its connection (virtualdata.proto)", PlayDataShare},
}};

}  // namespace example
