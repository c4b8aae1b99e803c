// A call from dialing to its end, and what a receiver does with a message that it cannot use or
// does not wholly know.
#include "call_exchange/scenarios.h"

namespace example {
namespace {

void DialAndHangUp(Telephony& telephony) {
  Dial dial;
  dial.set_address(telephony.settings().number);
  dial.set_clir(telephony.settings().clir);
  telephony.Ask<NoResultResponse>(dial);

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
  dial.set_clir(telephony.settings().clir);
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
  telephony.timeline().Note("technology 99 and field 15 are unknown here: all " +
                            std::to_string(bytes.size()) + " bytes came back as they were sent");
}

}  // namespace

void PlayCall(Telephony& telephony) {
  telephony.Ask<RegistrationResponse>(Operation::kRegistration);
  telephony.Ask<OperatorResponse>(Operation::kOperator);
  DialAndHangUp(telephony);
  DialNobody(telephony);
  MeetNewerPeer(telephony);
}

}  // namespace example
