// Dispatch: which message or operation is answered by what.
#include "call_exchange/modem/modem.h"

#include <virtual_modem/types.h>

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
  Visit(received->message, [this](const auto& message) {
    if (message.IsInitialized()) {
      (*this)(message);
    } else {
      Decline(message, RADIO_E_INVALID_ARGUMENTS);
    }
  });
  return true;
}

void Modem::DeclineAny(const MessageLite& message, Radio_Errno error) {
  const Type& type = TypeOf(message);
  if (type.kind == Kind::kResponse) return;  // answers to answers would never end
  if (!type.has_serial) return endpoint_.Send(message, operation_);
  // Without its serial nobody would know what an answer is for.
  if (const auto serial = SerialOf(message)) Result(*serial, error);
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
