#include "call_exchange/modem.h"

#include <virtual_modem/conference.pb.h>
#include <virtual_modem/types.h>

#include <algorithm>
#include <stdexcept>
#include <string>

namespace example {

using virtual_modem::As;

void Modem::Serve(std::chrono::milliseconds timeout) {
  while (const auto received = endpoint_.Receive(Clock::now() + timeout)) Take(*received);
  if (endpoint_.connected()) throw std::runtime_error("the telephony side sent nothing");
  if (!endpoint_.closed()) throw std::runtime_error(endpoint_.why_ended());
  if (calls_.calls_size() + ims_calls_.calls_size() > 0) {
    throw std::runtime_error("the telephony side is gone during a call");
  }
}

void Modem::Take(const Endpoint::Received& received) {
  operation_ = received.operation;
  if (received.message->IsInitialized()) {
    virtual_modem::Visit(*received.message, *this);
  } else {
    Decline(*received.message, RADIO_E_INVALID_ARGUMENTS);
  }
}

void Modem::operator()(const MessageLite& other) { Decline(other, RADIO_E_REQUEST_NOT_SUPPORTED); }

void Modem::Decline(const MessageLite& message, Radio_Errno error) {
  const Type& type = virtual_modem::TypeOf(message);
  if (type.kind == virtual_modem::Kind::kResponse) return;  // answers to answers would never end
  if (!type.has_serial) {
    endpoint_.Send(message, operation_);
    return;
  }
  // Without its serial nobody would know what an answer is for.
  const auto serial = virtual_modem::SerialOf(message);
  if (!serial) return;
  const auto* ims_sms = As<ImsSmsMessage>(message);
  if (ims_sms != nullptr || As<SendGSMSms>(message) != nullptr) {
    EndSms(*serial, error, ims_sms != nullptr && ims_sms->tech() == THREE_GPP2);
  } else {
    Result(*serial, error);
  }
}

namespace {

// ---- What never changes -------------------------------------------------------------------------

constexpr const char* kPlmn = "00101";  // the test network of TS 36.508

RegistrationResponse Registration() {
  RegistrationResponse response;
  response.set_regstate(RADIO_REG_HOME);
  response.set_rat(RADIO_T_LTE);
  response.set_registeredplmn(kPlmn);
  response.mutable_ltevopsinfo()->set_vopssupported(1);
  CellIdentity& cell = *response.mutable_cellidentity();
  cell.set_cellinfotype(RADIO_CELL_TYPE_LTE);
  CellIndentityLte& lte = *cell.mutable_cellindentitylte();
  lte.set_ci(0x1A2B301);
  lte.set_pci(301);
  lte.set_tac(0x5A01);
  lte.set_earfcn(1850);
  return response;
}

OperatorResponse Operator() {
  OperatorResponse response;
  response.set_alphalong("Test Network");
  response.set_alphashort("Test");
  response.set_numeric(kPlmn);
  return response;
}

IccCardStatusResponse CardStatus() {
  IccCardStatusResponse response;
  V1_2_CardStatus& card = *response.mutable_cardstatus();
  card.set_physicalslotid(0);
  card.set_atr("3B9F96801FC78031A073BE21136743200718000001A5");
  card.set_iccid("89860012345678901234");
  V1_0_CardStatus& base = *card.mutable_base();
  base.set_cardstate(CARD_PRESENT);
  base.set_universalpinstate(PIN_UNKNOWN);
  base.set_gsmumtssubscriptionappindex(0);
  base.set_cdmasubscriptionappindex(-1);
  base.set_imssubscriptionappindex(-1);
  AppStatus& usim = *base.add_applications();
  usim.set_apptype(APPTYPE_USIM);
  usim.set_appstate(APPSTATE_READY);
  usim.set_aid("A0000000871002FF86FFFF89FFFFFFFF");
  usim.set_applabel("USIM");
  usim.set_pin1(PIN_DISABLED);
  usim.set_pin2(PIN_ENABLED_NOT_VERIFIED);
  return response;
}

// Every technology's record is required; a modem on LTE measures nothing of the others.
GetSignalStrengthResponse SignalStrengths() {
  GetSignalStrengthResponse response;
  SignalStrength& signal = *response.mutable_signalstrength();
  const auto unmeasured = [](auto& gsm_like) {
    gsm_like.set_signalstrength(99);
    gsm_like.set_biterrorrate(99);
  };
  unmeasured(*signal.mutable_gsm());
  unmeasured(*signal.mutable_tdscdma());
  signal.mutable_tdscdma()->set_rscp(255);
  unmeasured(*signal.mutable_wcdma());
  signal.mutable_wcdma()->set_rscp(255);
  signal.mutable_wcdma()->set_ecno(255);
  signal.mutable_cdma()->set_dbm(INT32_MAX);
  signal.mutable_cdma()->set_ecio(INT32_MAX);
  signal.mutable_evdo()->set_dbm(INT32_MAX);
  signal.mutable_evdo()->set_ecio(INT32_MAX);
  signal.mutable_evdo()->set_signalnoiseratio(INT32_MAX);
  NrSignalStrength& nr = *signal.mutable_nr();
  nr.set_ssrsrp(INT32_MAX);
  nr.set_ssrsrq(INT32_MAX);
  nr.set_sssinr(INT32_MAX);
  nr.set_csirsrp(INT32_MAX);
  nr.set_csirsrq(INT32_MAX);
  nr.set_csisinr(INT32_MAX);
  LteSignalStrength& lte = *signal.mutable_lte();
  lte.set_signalstrength(24);
  lte.set_rsrp(95);
  lte.set_rsrq(9);
  lte.set_rssnr(-15);
  lte.set_cqi(10);
  lte.set_timingadvance(3);
  return response;
}

LastCallFailureCauseResponse LastCallFailCause() {
  LastCallFailureCauseResponse response;
  response.set_causecode(CAUSE_NORMAL);
  response.set_vendorcause("released by user");
  return response;
}

}  // namespace

void Modem::operator()(const NoParmRequest& request) {
  const std::int32_t serial = request.serial();
  switch (operation_) {
    case Operation::kRegistration:
      return Respond(serial, RADIO_E_SUCCESS, Registration());
    case Operation::kOperator:
      return Respond(serial, RADIO_E_SUCCESS, Operator());
    case Operation::kCardStatus:
      return Respond(serial, RADIO_E_SUCCESS, CardStatus());
    case Operation::kSignalStrength:
      return Respond(serial, RADIO_E_SUCCESS, SignalStrengths());
    case Operation::kLastCallFailCause:
      return Respond(serial, RADIO_E_SUCCESS, LastCallFailCause());
    case Operation::kCurrentCalls:
      return SendCallsAndProceed(serial);
    case Operation::kConference:
      return Merge(serial);
    default:
      return Decline(request, RADIO_E_REQUEST_NOT_SUPPORTED);
  }
}

// ---- Calls --------------------------------------------------------------------------------------

namespace {

// One active and one held (TS 22.083).
constexpr int kMaxCalls = 2;
constexpr int kUnknownNumber = 129;  // type of address, TS 24.008 10.5.4.7
constexpr int kInternationalNumber = 145;

// Adds a call with the lowest index that is free, from 1; null if there are too many. Call and
// QImsCall records have these fields in common.
template <typename Calls>
auto* AddOutgoing(Calls& calls, const std::string& number) {
  auto* call = calls.size() < kMaxCalls ? calls.Add() : nullptr;
  if (call == nullptr) return call;
  call->set_index(calls.size() == 2 && calls[0].index() == 1 ? 2 : 1);
  call->set_toa(number[0] == '+' ? kInternationalNumber : kUnknownNumber);
  call->set_ismpty(false);
  call->set_ismt(false);
  call->set_als(false);
  call->set_isvoice(true);
  call->set_isvoiceprivacy(false);
  call->set_number(number);
  call->set_numberpresentation(0);  // may be shown
  call->set_name("");
  call->set_namepresentation(0);
  return call;
}

// False when there is no call of that index.
template <typename Calls>
bool Remove(Calls& calls, int index) {
  const auto found = std::find_if(calls.begin(), calls.end(),
                                  [index](const auto& call) { return call.index() == index; });
  if (found == calls.end()) return false;
  calls.erase(found);
  return true;
}

}  // namespace

void Modem::operator()(const Dial& dial) {
  if (dial.address().empty()) return Result(dial.serial(), RADIO_E_INVALID_ARGUMENTS);
  if (operation_ != Operation::kImsCall) {
    Call* call = AddOutgoing(*calls_.mutable_calls(), dial.address());
    if (call != nullptr) call->set_state(RADIO_CALL_DIALING);
    return Result(dial.serial(), call != nullptr ? RADIO_E_SUCCESS : RADIO_E_NO_RESOURCES);
  }
  QImsCall* call = AddOutgoing(*ims_calls_.mutable_calls(), dial.address());
  if (call == nullptr) return Result(dial.serial(), RADIO_E_NO_RESOURCES);
  const bool first = ims_calls_.calls_size() == 1;
  if (!first) ims_calls_.mutable_calls(0)->set_state(IMS_CALL_HOLDING);
  call->set_state(IMS_CALL_ACTIVE);  // over IMS, the called party answers at once
  call->set_calltype(QIMS_VOICE);
  call->set_audiocodec(QIMS_CODEC_EVS_SWB);
  call->set_callrat(first ? CALL_RAT_LTE : CALL_RAT_WIFI);
  Result(dial.serial(), RADIO_E_SUCCESS);
  SendImsCalls();
  if (first) MoveToWifi();
}

void Modem::operator()(const Hangup& hangup) {
  const bool ims = operation_ == Operation::kImsCall;
  const bool ended = ims ? Remove(*ims_calls_.mutable_calls(), hangup.gsmindex())
                         : Remove(*calls_.mutable_calls(), hangup.gsmindex());
  Result(hangup.serial(), ended ? RADIO_E_SUCCESS : RADIO_E_INVALID_CALL_ID);
  if (ims && ended) SendImsCalls();
}

// The network's part is played here: each time the telephony side has looked, the newest call takes
// its next step, and the modem says so.
void Modem::SendCallsAndProceed(std::int32_t serial) {
  Respond(serial, RADIO_E_SUCCESS, calls_);
  if (calls_.calls().empty()) return;
  Call& call = *calls_.mutable_calls()->rbegin();
  if (call.state() == RADIO_CALL_ACTIVE) return;
  call.set_state(call.state() == RADIO_CALL_DIALING ? RADIO_CALL_ALERTING : RADIO_CALL_ACTIVE);
  NoResultIndication indication;
  indication.set_platformtype(QCOM);
  endpoint_.Send(indication, Operation::kCallStateChanged);
}

// During the first call the caller comes home. HandoverInfo numbers its technologies as
// QRadioTechType does: that is the agreement in this example.
void Modem::MoveToWifi() {
  HandoverInfo handover;
  handover.set_type(VIR_START);
  handover.set_srctech(QIMS_LTE);
  handover.set_targettech(QIMS_WIFI);
  endpoint_.Send(handover);
  handover.set_type(VIR_COMPLETE_SUCCESS);
  endpoint_.Send(handover);
  for (QImsCall& call : *ims_calls_.mutable_calls()) call.set_callrat(CALL_RAT_WIFI);
  SendImsCalls();
}

void Modem::Merge(std::int32_t serial) {
  if (ims_calls_.calls_size() < 2) return Result(serial, RADIO_E_INVALID_STATE);
  Result(serial, RADIO_E_SUCCESS);

  // The texts mean what both sides agree on; here the first is the outcome.
  EconfResultIndication outcome;
  outcome.set_text1("merged");
  outcome.set_text2("");
  outcome.set_text3("");
  outcome.set_text4("");
  outcome.set_text5("");
  outcome.set_joinedcallid(std::to_string(ims_calls_.calls().rbegin()->index()));
  endpoint_.Send(outcome);

  // Here the first text is the number, the second the state.
  ImsConferenceParticipants participants;
  for (QImsCall& call : *ims_calls_.mutable_calls()) {
    call.set_ismpty(true);
    call.set_state(IMS_CALL_ACTIVE);
    ImsParticipant& participant = *participants.add_participants();
    participant.set_text1(call.number());
    participant.set_text2("connected");
    participant.set_text3("");
    participant.set_text4("");
    participant.set_text5("");
  }
  endpoint_.Send(participants);
  SendImsCalls();
}

void Modem::SendImsCalls() {
  ims_calls_.set_platformtype(QCOM);
  ims_calls_.set_value(0);
  endpoint_.Send(ims_calls_);
}

// ---- Short messages -----------------------------------------------------------------------------

// Agreed between this example's sides, where the schema leaves it open: an ImsSmsMessage is
// answered by the response of its format, and a CDMA message comes in as a CdmaSmsMessage of its
// own, with the address it is from.

void Modem::EndSms(std::int32_t serial, Radio_Errno error, bool cdma) {
  const auto respond = [&](auto response) {
    SmsResult& result = *response.mutable_result();
    result.set_messageref(error == RADIO_E_SUCCESS ? ++sms_reference_ : 0);
    result.set_ackpdu("");
    result.set_errorcode(0);
    Respond(serial, error, response);
  };
  if (cdma) return respond(SendCdmaSmsResponse());
  respond(SendGsmSmsResponse());
}

void Modem::operator()(const SendGSMSms& request) {
  EndSms(request.serial(), RADIO_E_SUCCESS, false);
}

void Modem::operator()(const ImsSmsMessage& request) {
  if (request.tech() != THREE_GPP2 || !request.has_cdmamessage()) {
    return Decline(request, RADIO_E_INVALID_SMS_FORMAT);
  }
  EndSms(request.serial(), RADIO_E_SUCCESS, true);
  // The party reached replies at once, from the address that was written to.
  CdmaSmsMessage incoming = request.cdmamessage();
  incoming.clear_bearerdata();
  // Message identifier (deliver, number 1) and user data: "yo" in 8-bit octets (3GPP2 C.S0015 4.5).
  for (const int byte : {0x00, 0x03, 0x10, 0x00, 0x10, 0x01, 0x04, 0x00, 0x13, 0xCB, 0x78}) {
    incoming.add_bearerdata(byte);
  }
  endpoint_.Send(incoming);
}

void Modem::operator()(const CdmaSmsAck& request) { Result(request.serial(), RADIO_E_SUCCESS); }

// ---- Data sharing -------------------------------------------------------------------------------

// The modem side plays the slave, the device that uses the other's connection. What the numbered
// fields mean here is said in telephony.cc.

void Modem::operator()(const share::MasterSlaveShareConfirmReq& request) {
  share::MasterSlaveShareConfirmRsp response;
  response.set_result(request.value() != 0);
  endpoint_.Send(response);
}

void Modem::operator()(const share::MasterSlaveNetworkInfoUpdate& update) {
  share::MasterSlaveNetworkInfoResp response;
  response.set_value1(update.value1());
  response.set_value2(0);
  endpoint_.Send(response);

  share::SlaveSetupDataCallRequest setup;
  setup.set_value1(static_cast<std::int32_t>(update.value1()));
  setup.set_value2(0);  // the default profile
  setup.set_value3(0);
  setup.set_value4(0);
  endpoint_.Send(setup);
}

void Modem::operator()(const share::SlaveSetupDataCallResponse& response) {
  shared_call_ = response.value4();
  share::SlaveMasterShareDataChange change;
  change.set_result(true);
  change.set_text("connected");
  endpoint_.Send(change);
}

void Modem::operator()(const share::RemoteDataShareReleaseReq& request) {
  share::SlaveDeactivateDataCallRequest deactivate;
  deactivate.set_value1(static_cast<std::int32_t>(request.value1()));
  deactivate.set_value2(shared_call_);
  deactivate.set_value3(0);
  endpoint_.Send(deactivate);
}

}  // namespace example
