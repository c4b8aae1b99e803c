// An IMS call that moves from LTE to Wi-Fi while it is up, and its merge with a second one into a
// conference.
#include "call_exchange/scenarios.h"
#include "virtual_modem/conference.pb.h"
#include "virtual_modem/ims_service.pb.h"

namespace example {
namespace {

constexpr const char* kSecondNumber = "+861087654321";

QImsCall DialIms(Telephony& telephony, const std::string& number) {
  Dial dial;
  dial.set_address(number);
  dial.set_clir(telephony.settings().clir);
  telephony.Ask<NoResultResponse>(dial, Operation::kImsCall);
  const auto calls = telephony.Expect<ImsCallStateChanged>();
  telephony.Require(!calls.calls().empty(), "the call dialed is not listed");
  return *calls.calls().rbegin();
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

void HangUp(Telephony& telephony, int index) {
  Hangup hangup;
  hangup.set_gsmindex(index);
  telephony.Ask<NoResultResponse>(hangup, Operation::kImsCall);
  telephony.Expect<ImsCallStateChanged>();
}

}  // namespace

void PlayIms(Telephony& telephony) {
  const int first = DialIms(telephony, telephony.settings().number).index();
  FollowHandover(telephony);
  const int second = DialIms(telephony, kSecondNumber).index();
  Merge(telephony, second);
  HangUp(telephony, first);
  HangUp(telephony, second);
}

}  // namespace example
