// The modem side: a simulated modem, just able to answer the scenarios.
#pragma once

#include <virtual_modem/data_share.pb.h>
#include <virtual_modem/ims_service.pb.h>
#include <virtual_modem/radio.pb.h>

#include <chrono>
#include <cstdint>

#include "client/endpoint.h"

namespace example {

namespace share = ::virtualdata::proto;

class Modem {
 public:
  explicit Modem(Endpoint& endpoint) : endpoint_(endpoint) {}

  // Answers until the telephony side closes its end. Throws std::runtime_error when it does so
  // during a call, falls silent for the timeout, or the connection ends in another way.
  void Serve(std::chrono::milliseconds timeout);

  // Answers one message.
  void Take(const Endpoint::Received& received);

  // Visit() calls these with each complete message as its own class.
  void operator()(const Dial& dial);
  void operator()(const Hangup& hangup);
  void operator()(const NoParmRequest& request);
  void operator()(const SendGSMSms& request);
  void operator()(const ImsSmsMessage& request);
  void operator()(const CdmaSmsAck& request);
  void operator()(const share::MasterSlaveShareConfirmReq& request);
  void operator()(const share::MasterSlaveNetworkInfoUpdate& update);
  void operator()(const share::SlaveSetupDataCallResponse& response);
  void operator()(const share::RemoteDataShareReleaseReq& request);
  void operator()(const MessageLite& other);

 private:
  // Sends the response with its header filled.
  template <typename Response>
  void Respond(std::int32_t serial, Radio_Errno error, Response response) {
    response.set_platformtype(QCOM);
    response.set_serial(serial);
    response.set_error(error);
    endpoint_.Send(response);
  }
  void Result(std::int32_t serial, Radio_Errno error) {
    Respond(serial, error, NoResultResponse());
  }

  // Refuses a request in the response that its sender awaits. Responses, and requests that lack
  // their serial, get no answer. A message of a type without a serial is meant for the paired
  // device, which here is the sender: it is sent back as it came, unknown fields included.
  void Decline(const MessageLite& message, Radio_Errno error);

  void EndSms(std::int32_t serial, Radio_Errno error, bool cdma);
  void SendCallsAndProceed(std::int32_t serial);
  void MoveToWifi();
  void Merge(std::int32_t serial);
  void SendImsCalls();

  Endpoint& endpoint_;
  Operation operation_ = Operation::kByType;  // of the message in hand
  GetCurrentCallsResponse calls_;             // the circuit-switched calls as they stand
  ImsCallStateChanged ims_calls_;             // the IMS calls as they stand
  std::int32_t sms_reference_ = 0;            // of the last short message sent
  std::int32_t shared_call_ = 0;              // the data call that the master has set up
};

}  // namespace example
