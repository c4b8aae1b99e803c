// The modem side: a make-believe modem, just able enough to answer the scenarios. Its answers stand
// in one file a scenario, beside this one.
#pragma once

#include <google/protobuf/message_lite.h>

#include <cstdint>

#include "call_exchange/endpoint.h"
#include "virtual_modem/data_share.pb.h"
#include "virtual_modem/ims_service.pb.h"
#include "virtual_modem/radio.pb.h"

namespace virtual_modem::exchange {

namespace share = ::virtualdata::proto;

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
  void operator()(const SendGSMSms& request);
  void operator()(const ImsSmsMessage& request);
  void operator()(const VirtualCdmaSmsMessage& request);
  void operator()(const CdmaSmsAck& request);
  void operator()(const share::MasterSlaveShareConfirmReq& request);
  void operator()(const share::MasterSlaveNetworkInfoUpdate& update);
  void operator()(const share::SlaveSetupDataCallResponse& response);
  void operator()(const share::RemoteDataShareReleaseReq& request);
  template <typename M>
  void operator()(const M& message) {
    Decline(message, RADIO_E_REQUEST_NOT_SUPPORTED);
  }

 private:
  // Refuses a request in the response that its sender awaits. Responses, and requests that lack
  // their serial, get no answer. A message of a type without a serial is meant for the paired
  // device, which here is the sender: it goes on as it came, with all that is unknown in it.
  void Decline(const MessageLite& message, Radio_Errno error) { DeclineAny(message, error); }
  void Decline(const SendGSMSms& request, Radio_Errno error);
  void Decline(const ImsSmsMessage& request, Radio_Errno error);
  void Decline(const VirtualCdmaSmsMessage& request, Radio_Errno error);
  void DeclineAny(const MessageLite& message, Radio_Errno error);
  void Result(std::int32_t serial, Radio_Errno error);

  // A response with its header filled, for success.
  template <typename Response>
  Response& Answer(std::int32_t serial) {
    return Success(endpoint_.Draft<Response>(), serial);
  }
  template <typename Response>
  static Response& Success(Response& response, std::int32_t serial) {
    response.set_platformtype(QCOM);
    response.set_serial(serial);
    response.set_error(RADIO_E_SUCCESS);
    return response;
  }

  void SendRegistration(std::int32_t serial);
  void SendOperator(std::int32_t serial);
  void SendCardStatus(std::int32_t serial);
  void SendSignalStrength(std::int32_t serial);

  void SendCallsAndProceed(std::int32_t serial);
  void SendLastCallFailCause(std::int32_t serial);

  template <typename Response>
  void EndSms(std::int32_t serial, Radio_Errno error);
  template <typename Sms>
  void ReplyTo(const Sms& sms);

  void DialIms(const Dial& dial);
  void HangupIms(const Hangup& hangup);
  void MoveToWifi();
  void Merge(std::int32_t serial);
  void SendImsCalls();

  Endpoint& endpoint_;
  Operation operation_ = Operation::kByType;  // of the message in hand
  GetCurrentCallsResponse calls_;             // the circuit-switched calls as they stand
  ImsCallStateChanged ims_calls_;             // the IMS calls as they stand
  std::int32_t sms_reference_ = 0;            // of the last short message sent
  std::int32_t incoming_ = 0;                 // serial of the last short message received
  std::int32_t shared_call_ = 0;              // the data call that the master has set up
};

}  // namespace virtual_modem::exchange
