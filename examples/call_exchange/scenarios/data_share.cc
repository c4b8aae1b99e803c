// A master, played by this side, shares its data connection with a slave until it takes it back.
//
// The fields are numbered, not named: two devices agree on their meaning. Agreed here: value1 is
// the share; the three lists are addresses, DNS servers and gateways; the rest is said where it is
// set.
#include "call_exchange/scenarios.h"
#include "virtual_modem/data_share.pb.h"

namespace virtual_modem::exchange {
namespace {

namespace share = ::virtualdata::proto;

constexpr int kShare = 1;
constexpr int kDataCall = 1;
constexpr int kMtu = 1420;
constexpr const char* kAddress = "192.0.2.17/24";
constexpr const char* kDns = "192.0.2.53";
constexpr const char* kGateway = "192.0.2.1";

void Offer(Telephony& master) {
  auto& request = master.Draft<share::MasterSlaveShareConfirmReq>();
  request.set_value(kShare);
  master.Send(request);
  if (!master.Expect<share::MasterSlaveShareConfirmRsp>().result()) {
    throw LinkError("the slave declines the share");
  }

  auto& network = master.Draft<share::MasterSlaveNetworkInfoUpdate>();
  network.set_value1(kShare);
  network.add_list2(kAddress);
  network.add_list3(kDns);
  network.add_list4(kGateway);
  network.set_value5(kMtu);
  network.set_text6("internet");  // APN
  network.set_value7(RADIO_T_LTE);
  master.Send(network);
  if (master.Expect<share::MasterSlaveNetworkInfoResp>().value2() != 0) {
    throw LinkError("the slave cannot use the network");
  }
}

void SetUpDataCall(Telephony& master) {
  const auto& request = master.Expect<share::SlaveSetupDataCallRequest>();
  auto& response = master.Draft<share::SlaveSetupDataCallResponse>();
  response.set_value1(request.value1());
  response.set_value2(0);   // set up
  response.set_value3(-1);  // no retry needed
  response.set_value4(kDataCall);
  response.set_value5(2);                 // active
  response.set_value6(request.value2());  // profile
  response.set_value7(kMtu);
  response.add_list8(kAddress);
  response.add_list9(kDns);
  response.add_list10(kGateway);
  response.set_value11(0);
  response.set_value12(0);
  master.Send(response);
  if (!master.Expect<share::SlaveMasterShareDataChange>().result()) {
    throw LinkError("the slave is not connected");
  }
}

void Release(Telephony& master) {
  auto& release = master.Draft<share::RemoteDataShareReleaseReq>();
  release.set_value1(kShare);
  release.set_value2(0);  // no fault
  master.Send(release);
  if (master.Expect<share::SlaveDeactivateDataCallRequest>().value2() != kDataCall) {
    throw LinkError("the slave deactivates another data call");
  }
}

}  // namespace

void PlayDataShare(Telephony& telephony) {
  Offer(telephony);
  SetUpDataCall(telephony);
  Release(telephony);
}

}  // namespace virtual_modem::exchange
