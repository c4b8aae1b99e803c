// Data sharing: the modem side plays the slave, the device that uses the other's connection. What
// the numbered fields mean here is said in scenarios/data_share.cc.
#include "call_exchange/modem/modem.h"

namespace example {
namespace {

constexpr std::int32_t kDefaultProfile = 0;

}  // namespace

void Modem::operator()(const share::MasterSlaveShareConfirmReq& request) {
  share::MasterSlaveShareConfirmRsp response;
  response.set_result(request.value() != 0);
  endpoint_.Send(response);
}

void Modem::operator()(const share::MasterSlaveNetworkInfoUpdate& update) {
  share::MasterSlaveNetworkInfoResp response;
  response.set_value1(update.value1());
  response.set_value2(0);
  endpoint_.Send(response);

  share::SlaveSetupDataCallRequest setup;
  setup.set_value1(static_cast<std::int32_t>(update.value1()));
  setup.set_value2(kDefaultProfile);
  setup.set_value3(0);
  setup.set_value4(0);
  endpoint_.Send(setup);
}

void Modem::operator()(const share::SlaveSetupDataCallResponse& response) {
  shared_call_ = response.value4();
  share::SlaveMasterShareDataChange change;
  change.set_result(true);
  change.set_text("connected");
  endpoint_.Send(change);
}

void Modem::operator()(const share::RemoteDataShareReleaseReq& request) {
  share::SlaveDeactivateDataCallRequest deactivate;
  deactivate.set_value1(static_cast<std::int32_t>(request.value1()));
  deactivate.set_value2(shared_call_);
  deactivate.set_value3(0);
  endpoint_.Send(deactivate);
}

}  // namespace example
