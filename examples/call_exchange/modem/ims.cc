// IMS calls. In this network, the called party answers at once.
#include <virtual_modem/conference.pb.h>

#include "call_exchange/modem/call_record.h"
#include "call_exchange/modem/modem.h"

namespace example {

void Modem::DialIms(const Dial& dial) {
  if (ims_calls_.calls_size() == kMaxCalls) return Result(dial.serial(), RADIO_E_NO_RESOURCES);
  Result(dial.serial(), RADIO_E_SUCCESS);
  for (QImsCall& call : *ims_calls_.mutable_calls()) call.set_state(IMS_CALL_HOLDING);
  const bool first = ims_calls_.calls().empty();
  const int index = FreeIndex(ims_calls_.calls());
  QImsCall& call = *ims_calls_.add_calls();
  FillOutgoing(call, index, dial.address());
  call.set_state(IMS_CALL_ACTIVE);
  call.set_calltype(QIMS_VOICE);
  call.set_audiocodec(QIMS_CODEC_EVS_SWB);
  call.set_callrat(first ? CALL_RAT_LTE : CALL_RAT_WIFI);
  SendImsCalls();
  if (first) MoveToWifi();
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

void Modem::HangupIms(const Hangup& hangup) {
  if (!Remove(*ims_calls_.mutable_calls(), hangup.gsmindex())) {
    return Result(hangup.serial(), RADIO_E_INVALID_CALL_ID);
  }
  Result(hangup.serial(), RADIO_E_SUCCESS);
  SendImsCalls();
}

void Modem::SendImsCalls() {
  ims_calls_.set_platformtype(QCOM);
  ims_calls_.set_value(0);
  endpoint_.Send(ims_calls_);
}

}  // namespace example
