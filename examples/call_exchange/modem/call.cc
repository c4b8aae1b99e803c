// Circuit-switched calls.
#include <algorithm>

#include "call_exchange/modem/call_record.h"
#include "call_exchange/modem/modem.h"

namespace example {

void Modem::operator()(const Dial& dial) {
  if (dial.address().empty()) return Result(dial.serial(), RADIO_E_INVALID_ARGUMENTS);
  if (operation_ == Operation::kImsCall) return DialIms(dial);
  if (calls_.calls_size() == kMaxCalls) return Result(dial.serial(), RADIO_E_NO_RESOURCES);
  const int index = FreeIndex(calls_.calls());
  Call& call = *calls_.add_calls();
  FillOutgoing(call, index, dial.address());
  call.set_state(RADIO_CALL_DIALING);
  Result(dial.serial(), RADIO_E_SUCCESS);
}

void Modem::operator()(const Hangup& hangup) {
  if (operation_ == Operation::kImsCall) return HangupIms(hangup);
  const bool ended = Remove(*calls_.mutable_calls(), hangup.gsmindex());
  Result(hangup.serial(), ended ? RADIO_E_SUCCESS : RADIO_E_INVALID_CALL_ID);
}

// The network's part is played here: each time the telephony side has looked, the newest call takes
// its next step, and the modem says so.
void Modem::SendCallsAndProceed(std::int32_t serial) {
  auto response = Answer<GetCurrentCallsResponse>(serial);
  *response.mutable_calls() = calls_.calls();
  endpoint_.Send(response);
  if (calls_.calls().empty()) return;
  Call& call = *calls_.mutable_calls(calls_.calls_size() - 1);
  if (call.state() == RADIO_CALL_ACTIVE) return;
  call.set_state(call.state() == RADIO_CALL_DIALING ? RADIO_CALL_ALERTING : RADIO_CALL_ACTIVE);
  NoResultIndication indication;
  indication.set_platformtype(QCOM);
  endpoint_.Send(indication, Operation::kCallStateChanged);
}

void Modem::SendLastCallFailCause(std::int32_t serial) {
  auto response = Answer<LastCallFailureCauseResponse>(serial);
  response.set_causecode(CAUSE_NORMAL);
  response.set_vendorcause("released by user");
  endpoint_.Send(response);
}

}  // namespace example
