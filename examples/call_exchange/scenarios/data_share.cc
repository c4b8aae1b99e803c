// A master, played by this side, shares its data connection with a slave until it takes it back.
//
// The fields are numbered, not named: two devices agree on their meaning. Agreed here: value1 is
// the share; the three lists are addresses, DNS servers and gateways; the rest is said where it is
// set.
#include "call_exchange/scenarios.h"
#include "virtual_modem/data_share.pb.h"

namespace example {
namespace {

namespace share = ::virtualdata::proto;

constexpr int kShare = 1;
constexpr int kDataCall = 1;
constexpr int kMtu = 1420;
constexpr const char* kAddress = "192.0.2.17/24";
constexpr const char* kDns = "192.0.2.53";
constexpr const char* kGateway = "192.0.2.1";

void Offer(Telephony& master) {
  share::MasterSlaveShareConfirmReq request;
  request.set_value(kShare);
  master.Send(request);
  master.Require(master.Expect<share::MasterSlaveShareConfirmRsp>().result(),
                 "the slave declines the share");

  share::MasterSlaveNetworkInfoUpdate network;
  network.set_value1(kShare);
  network.add_list2(kAddress);
  network.add_list3(kDns);
  network.add_list4(kGateway);
  network.set_value5(kMtu);
  network.set_text6("internet");  // APN
  network.set_value7(RADIO_T_LTE);
  master.Send(network);
  master.Require(master.Expect<share::MasterSlaveNetworkInfoResp>().value2() == 0,
                 "the slave cannot use the network");
}

void SetUpDataCall(Telephony& master) {
  const auto request = master.Expect<share::SlaveSetupDataCallRequest>();
  share::SlaveSetupDataCallResponse response;
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
  master.Require(master.Expect<share::SlaveMasterShareDataChange>().result(),
                 "the slave is not connected");
}

void Release(Telephony& master) {
  share::RemoteDataShareReleaseReq release;
  release.set_value1(kShare);
  release.set_value2(0);  // no fault
  master.Send(release);
  master.Require(master.Expect<share::SlaveDeactivateDataCallRequest>().value2() == kDataCall,
                 "the slave deactivates another data call");
}

}  // namespace

void PlayDataShare(Telephony& telephony) {
  Offer(telephony);
  SetUpDataCall(telephony);
  Release(telephony);
}

}  // namespace example
