#include "call_exchange/modem.h"

#include <algorithm>

#include "call_exchange/essentials.h"
#include "call_exchange/visit.h"

namespace virtual_modem::exchange {
namespace {

constexpr int kMaxCalls = 7;               // TS 22.083: one active, one held, five in a conference
constexpr int kInternationalNumber = 145;  // type of address, TS 24.008 10.5.4.7
constexpr int kUnknownNumber = 129;

void FillCall(const Dial& dial, int index, Call& call) {
  call.set_state(RADIO_CALL_DIALING);
  call.set_index(index);
  call.set_toa(dial.address()[0] == '+' ? kInternationalNumber : kUnknownNumber);
  call.set_ismpty(false);
  call.set_ismt(false);
  call.set_als(false);
  call.set_isvoice(true);
  call.set_isvoiceprivacy(false);
  call.set_number(dial.address());
  call.set_numberpresentation(0);
  call.set_name("");
  call.set_namepresentation(0);
}

}  // namespace

void Modem::Serve() {
  while (ServeOne()) {
  }
  if (!calls_.calls().empty()) throw LinkError("the telephony side is gone during a call");
}

bool Modem::ServeOne() {
  const auto received = endpoint_.Receive();
  if (!received) return false;
  operation_ = received->frame.operation;
  if (received->message.IsInitialized()) {
    Visit(*this, received->message);
  } else {
    Decline(received->message, RADIO_E_INVALID_ARGUMENTS);
  }
  return true;
}

void Modem::Decline(const MessageLite& message, Radio_Errno error) {
  if (const auto serial = SerialOf(message)) {
    Result(*serial, error);
  } else {
    endpoint_.Send(message, operation_);
  }
}

void Modem::Result(std::int32_t serial, Radio_Errno error) {
  Success(result_, serial).set_error(error);
  endpoint_.Send(result_);
}

void Modem::operator()(const Dial& dial) {
  if (dial.address().empty()) return Result(dial.serial(), RADIO_E_INVALID_ARGUMENTS);
  if (calls_.calls_size() == kMaxCalls) return Result(dial.serial(), RADIO_E_NO_RESOURCES);
  const int index = calls_.calls_size() + 1;
  FillCall(dial, index, *calls_.add_calls());
  Result(dial.serial(), RADIO_E_SUCCESS);
}

void Modem::operator()(const Hangup& hangup) {
  auto& calls = *calls_.mutable_calls();
  const auto call = std::find_if(calls.begin(), calls.end(), [&hangup](const Call& candidate) {
    return candidate.index() == hangup.gsmindex();
  });
  if (call == calls.end()) return Result(hangup.serial(), RADIO_E_INVALID_CALL_ID);
  calls.erase(call);
  Result(hangup.serial(), RADIO_E_SUCCESS);
}

void Modem::operator()(const NoParmRequest& request) {
  switch (operation_) {
    case Operation::kRegistration:
      return SendRegistration(request.serial());
    case Operation::kOperator:
      return SendOperator(request.serial());
    case Operation::kCurrentCalls:
      return SendCallsAndProceed(request.serial());
    case Operation::kLastCallFailCause:
      return SendLastCallFailCause(request.serial());
    default:
      return Decline(request, RADIO_E_REQUEST_NOT_SUPPORTED);
  }
}

void Modem::SendRegistration(std::int32_t serial) {
  Success(registration_, serial);
  registration_.set_regstate(RADIO_REG_HOME);
  registration_.set_rat(RADIO_T_LTE);
  registration_.set_registeredplmn("00101");
  registration_.mutable_ltevopsinfo()->set_vopssupported(1);
  CellIdentity& cell = *registration_.mutable_cellidentity();
  cell.set_cellinfotype(RADIO_CELL_TYPE_LTE);
  CellIndentityLte& lte = *cell.mutable_cellindentitylte();
  lte.set_ci(0x1A2B301);
  lte.set_pci(301);
  lte.set_tac(0x5A01);
  lte.set_earfcn(1850);
  endpoint_.Send(registration_);
}

void Modem::SendOperator(std::int32_t serial) {
  Success(operator_, serial);
  operator_.set_alphalong("Test Network");
  operator_.set_alphashort("Test");
  operator_.set_numeric("00101");  // TS 23.003: the test PLMN
  endpoint_.Send(operator_);
}

void Modem::SendLastCallFailCause(std::int32_t serial) {
  Success(cause_, serial);
  cause_.set_causecode(CAUSE_NORMAL);
  cause_.set_vendorcause("released by user");
  endpoint_.Send(cause_);
}

// The network's part is played here: each time the telephony side has looked, the newest call takes
// its next step, and the modem says so.
void Modem::SendCallsAndProceed(std::int32_t serial) {
  endpoint_.Send(Success(calls_, serial));
  if (calls_.calls().empty()) return;
  Call& call = *calls_.mutable_calls(calls_.calls_size() - 1);
  if (call.state() == RADIO_CALL_ACTIVE) return;
  call.set_state(call.state() == RADIO_CALL_DIALING ? RADIO_CALL_ALERTING : RADIO_CALL_ACTIVE);
  indication_.set_platformtype(QCOM);
  endpoint_.Send(indication_, Operation::kCallStateChanged);
}

}  // namespace virtual_modem::exchange
