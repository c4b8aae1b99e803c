// The modem side: a make-believe modem, just able enough to answer the scenarios.
#pragma once

#include <google/protobuf/message_lite.h>

#include <cstdint>

#include "call_exchange/endpoint.h"
#include "virtual_modem/radio.pb.h"

namespace virtual_modem::exchange {

class Modem {
 public:
  explicit Modem(Endpoint& endpoint) : endpoint_(endpoint) {}

  // Answers until the telephony side closes its end. Throws LinkError when it does so during a
  // call, or when it sends what must not be.
  void Serve();

  // Answers one message; false when the telephony side has closed its end.
  bool ServeOne();

  // Visit() calls these with each initialized message as its own class.
  void operator()(const Dial& dial);
  void operator()(const Hangup& hangup);
  void operator()(const NoParmRequest& request);
  template <typename M>
  void operator()(const M& message) {
    Decline(message, RADIO_E_REQUEST_NOT_SUPPORTED);
  }

 private:
  // Refuses a request. A message without a serial cannot be answered: it is meant for the paired
  // device, which here is the sender, and goes on as it came, with all that is unknown in it.
  void Decline(const MessageLite& message, Radio_Errno error);
  void Result(std::int32_t serial, Radio_Errno error);

  // Fills the header of a successful response.
  template <typename Response>
  Response& Success(Response& response, std::int32_t serial) {
    response.set_platformtype(QCOM);
    response.set_serial(serial);
    response.set_error(RADIO_E_SUCCESS);
    return response;
  }

  void SendRegistration(std::int32_t serial);
  void SendOperator(std::int32_t serial);
  void SendLastCallFailCause(std::int32_t serial);
  void SendCallsAndProceed(std::int32_t serial);

  Endpoint& endpoint_;
  Operation operation_ = Operation::kByType;  // of the message in hand
  // Messages are kept and filled anew: their memory is reused.
  NoResultResponse result_;
  NoResultIndication indication_;
  GetCurrentCallsResponse calls_;  // the calls as they stand
  LastCallFailureCauseResponse cause_;
  RegistrationResponse registration_;
  OperatorResponse operator_;
};

}  // namespace virtual_modem::exchange
