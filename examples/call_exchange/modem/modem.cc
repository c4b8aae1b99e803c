// Dispatch: which message or operation is answered by what.
#include "call_exchange/modem/modem.h"

#include "call_exchange/essentials.h"
#include "call_exchange/visit.h"

namespace virtual_modem::exchange {

void Modem::Serve() {
  while (ServeOne()) {
  }
  if (calls_.calls_size() + ims_calls_.calls_size() > 0) {
    throw LinkError("the telephony side is gone during a call");
  }
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
  auto& result = Answer<NoResultResponse>(serial);
  result.set_error(error);
  endpoint_.Send(result);
}

void Modem::operator()(const NoParmRequest& request) {
  switch (operation_) {
    case Operation::kRegistration:
      return SendRegistration(request.serial());
    case Operation::kOperator:
      return SendOperator(request.serial());
    case Operation::kCardStatus:
      return SendCardStatus(request.serial());
    case Operation::kSignalStrength:
      return SendSignalStrength(request.serial());
    case Operation::kCurrentCalls:
      return SendCallsAndProceed(request.serial());
    case Operation::kLastCallFailCause:
      return SendLastCallFailCause(request.serial());
    case Operation::kConference:
      return Merge(request.serial());
    default:
      return Decline(request, RADIO_E_REQUEST_NOT_SUPPORTED);
  }
}

}  // namespace virtual_modem::exchange
