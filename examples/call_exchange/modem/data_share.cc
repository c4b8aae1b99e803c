// Data sharing: the modem side plays the slave, the device that uses the other's connection. What
// the numbered fields mean here is said in scenarios/data_share.cc.
#include "call_exchange/modem/modem.h"

namespace virtual_modem::exchange {
namespace {

constexpr std::int32_t kDefaultProfile = 0;

}  // namespace

void Modem::operator()(const share::MasterSlaveShareConfirmReq& request) {
  auto& response = endpoint_.Draft<share::MasterSlaveShareConfirmRsp>();
  response.set_result(request.value() != 0);
  endpoint_.Send(response);
}

void Modem::operator()(const share::MasterSlaveNetworkInfoUpdate& update) {
  auto& response = endpoint_.Draft<share::MasterSlaveNetworkInfoResp>();
  response.set_value1(update.value1());
  response.set_value2(0);
  endpoint_.Send(response);

  auto& setup = endpoint_.Draft<share::SlaveSetupDataCallRequest>();
  setup.set_value1(static_cast<std::int32_t>(update.value1()));
  setup.set_value2(kDefaultProfile);
  setup.set_value3(0);
  setup.set_value4(0);
  endpoint_.Send(setup);
}

void Modem::operator()(const share::SlaveSetupDataCallResponse& response) {
  shared_call_ = response.value4();
  auto& change = endpoint_.Draft<share::SlaveMasterShareDataChange>();
  change.set_result(true);
  change.set_text("connected");
  endpoint_.Send(change);
}

void Modem::operator()(const share::RemoteDataShareReleaseReq& request) {
  auto& deactivate = endpoint_.Draft<share::SlaveDeactivateDataCallRequest>();
  deactivate.set_value1(static_cast<std::int32_t>(request.value1()));
  deactivate.set_value2(shared_call_);
  deactivate.set_value3(0);
  endpoint_.Send(deactivate);
}

}  // namespace virtual_modem::exchange
