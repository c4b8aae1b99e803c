// Dispatch: which message or operation is answered by what.
#include "call_exchange/modem/modem.h"

#include <virtual_modem/types.h>

#include <stdexcept>

namespace example {

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

void Modem::Decline(const MessageLite& message, Radio_Errno error) {
  const Type& type = virtual_modem::TypeOf(message);
  if (type.kind == virtual_modem::Kind::kResponse) return;  // answers to answers would never end
  if (!type.has_serial) {
    endpoint_.Send(message, operation_);
    return;
  }
  // Without its serial nobody would know what an answer is for.
  const auto serial = virtual_modem::SerialOf(message);
  if (serial && !EndSms(message, *serial, error)) Result(*serial, error);
}

void Modem::operator()(const MessageLite& other) { Decline(other, RADIO_E_REQUEST_NOT_SUPPORTED); }

void Modem::Result(std::int32_t serial, Radio_Errno error) {
  endpoint_.Send(Answer<NoResultResponse>(serial, error));
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

}  // namespace example
