// Network, card and signal.
#include "call_exchange/modem/modem.h"

namespace example {
namespace {

constexpr const char* kPlmn = "00101";  // the test network of TS 36.508

// Every technology's record is required; a modem on LTE measures nothing of the others.
void FillUnmeasured(SignalStrength& signal) {
  signal.mutable_gsm()->set_signalstrength(99);
  signal.mutable_gsm()->set_biterrorrate(99);
  signal.mutable_cdma()->set_dbm(INT32_MAX);
  signal.mutable_cdma()->set_ecio(INT32_MAX);
  signal.mutable_evdo()->set_dbm(INT32_MAX);
  signal.mutable_evdo()->set_ecio(INT32_MAX);
  signal.mutable_evdo()->set_signalnoiseratio(INT32_MAX);
  signal.mutable_tdscdma()->set_signalstrength(99);
  signal.mutable_tdscdma()->set_biterrorrate(99);
  signal.mutable_tdscdma()->set_rscp(255);
  signal.mutable_wcdma()->set_signalstrength(99);
  signal.mutable_wcdma()->set_biterrorrate(99);
  signal.mutable_wcdma()->set_rscp(255);
  signal.mutable_wcdma()->set_ecno(255);
  NrSignalStrength& nr = *signal.mutable_nr();
  nr.set_ssrsrp(INT32_MAX);
  nr.set_ssrsrq(INT32_MAX);
  nr.set_sssinr(INT32_MAX);
  nr.set_csirsrp(INT32_MAX);
  nr.set_csirsrq(INT32_MAX);
  nr.set_csisinr(INT32_MAX);
}

}  // namespace

void Modem::SendRegistration(std::int32_t serial) {
  auto response = Answer<RegistrationResponse>(serial);
  response.set_regstate(RADIO_REG_HOME);
  response.set_rat(RADIO_T_LTE);
  response.set_registeredplmn(kPlmn);
  response.mutable_ltevopsinfo()->set_vopssupported(1);
  CellIdentity& cell = *response.mutable_cellidentity();
  cell.set_cellinfotype(RADIO_CELL_TYPE_LTE);
  CellIndentityLte& lte = *cell.mutable_cellindentitylte();
  lte.set_ci(0x1A2B301);
  lte.set_pci(301);
  lte.set_tac(0x5A01);
  lte.set_earfcn(1850);
  endpoint_.Send(response);
}

void Modem::SendOperator(std::int32_t serial) {
  auto response = Answer<OperatorResponse>(serial);
  response.set_alphalong("Test Network");
  response.set_alphashort("Test");
  response.set_numeric(kPlmn);
  endpoint_.Send(response);
}

void Modem::SendCardStatus(std::int32_t serial) {
  auto response = Answer<IccCardStatusResponse>(serial);
  V1_2_CardStatus& card = *response.mutable_cardstatus();
  card.set_physicalslotid(0);
  card.set_atr("3B9F96801FC78031A073BE21136743200718000001A5");
  card.set_iccid("89860012345678901234");
  V1_0_CardStatus& base = *card.mutable_base();
  base.set_cardstate(CARD_PRESENT);
  base.set_universalpinstate(PIN_UNKNOWN);
  base.set_gsmumtssubscriptionappindex(0);
  base.set_cdmasubscriptionappindex(-1);
  base.set_imssubscriptionappindex(-1);
  AppStatus& usim = *base.add_applications();
  usim.set_apptype(APPTYPE_USIM);
  usim.set_appstate(APPSTATE_READY);
  usim.set_aid("A0000000871002FF86FFFF89FFFFFFFF");
  usim.set_applabel("USIM");
  usim.set_pin1(PIN_DISABLED);
  usim.set_pin2(PIN_ENABLED_NOT_VERIFIED);
  endpoint_.Send(response);
}

void Modem::SendSignalStrength(std::int32_t serial) {
  auto response = Answer<GetSignalStrengthResponse>(serial);
  SignalStrength& signal = *response.mutable_signalstrength();
  FillUnmeasured(signal);
  LteSignalStrength& lte = *signal.mutable_lte();
  lte.set_signalstrength(24);
  lte.set_rsrp(95);
  lte.set_rsrq(9);
  lte.set_rssnr(-15);
  lte.set_cqi(10);
  lte.set_timingadvance(3);
  endpoint_.Send(response);
}

}  // namespace example
