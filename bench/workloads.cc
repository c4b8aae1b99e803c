// The values that the benchmark sends: plausible content for each of its messages.
#include "records.h"

namespace virtual_modem::bench {
namespace {

constexpr int kNotMeasured = INT32_MAX;

template <typename Record>
Record MakeCall(int index) {
  Record call;
  call.state = index == 1 ? RADIO_CALL_ACTIVE : RADIO_CALL_HOLDING;
  call.index = index;
  call.toa = 145;
  call.ismt = index % 2 == 0;
  call.isvoice = true;
  call.number = "+4915112345" + std::to_string(600 + index);
  call.name = "Subscriber " + std::to_string(index);
  return call;
}

AppStatusRecord MakeApp(AppType type, const char* aid, const char* label) {
  AppStatusRecord app;
  app.apptype = type;
  app.appstate = APPSTATE_READY;
  app.persosubstate = PERSO_READY;
  app.aid = aid;
  app.applabel = label;
  app.pin1 = PIN_DISABLED;
  app.pin2 = PIN_ENABLED_NOT_VERIFIED;
  return app;
}

}  // namespace

NoResultResponseRecord MakeNoResultResponse() { return {QCOM, 4711, RADIO_E_SUCCESS}; }

DialRecord MakeDial() { return {QCOM, 4711, std::string(14, '5'), CLIR_DEFAULT}; }

GetCurrentCallsResponseRecord MakeGetCurrentCallsResponse() {
  GetCurrentCallsResponseRecord response{QCOM, 4711, RADIO_E_SUCCESS, {}};
  for (int i = 1; i <= 3; ++i) response.calls.push_back(MakeCall<CallRecord>(i));
  return response;
}

SignalStrengthChangedRecord MakeSignalStrengthChanged() {
  SignalStrengthChangedRecord indication;
  indication.platformtype = QCOM;
  SignalStrengthRecord& report = indication.signalstrength;
  report.gsm = {99, 99, kNotMeasured};
  report.cdma = {120, 160};
  report.evdo = {120, 160, 8};
  report.lte = {28, 95, 11, 130, 12, 7};
  report.tdscdma = {99, 99, 255};
  report.wcdma = {kNotMeasured, kNotMeasured, 255, 255};
  report.nr = {-95, -11, 13, kNotMeasured, kNotMeasured, kNotMeasured};
  return indication;
}

SlaveSetupDataCallResponseRecord MakeSlaveSetupDataCallResponse() {
  SlaveSetupDataCallResponseRecord response;
  response.value1 = 0;
  response.value2 = -1;
  response.value3 = 5;
  response.value4 = 2;
  response.value5 = 3;
  response.value6 = 1500;
  response.value7 = 1500;
  response.list8 = {"10.20.30.40/30", "2001:db8:1:2::3/64"};
  response.list9 = {"10.20.0.1", "10.20.0.2", "2001:db8::53", "2001:db8::54"};
  response.list10 = {"10.20.30.41", "fe80::1"};
  response.value11 = 1;
  response.value12 = 7;
  return response;
}

IccCardStatusResponseRecord MakeIccCardStatusResponse() {
  IccCardStatusResponseRecord response;
  response.platformtype = QCOM;
  response.serial = 4711;
  response.error = RADIO_E_SUCCESS;
  V1_2_CardStatusRecord& card = response.cardstatus;
  card.physicalslotid = 1;
  card.atr = "3B9F96801FC78031E073FE211B63F1028401018E";
  card.iccid = "89490200001234567890";
  card.base.cardstate = CARD_PRESENT;
  card.base.universalpinstate = PIN_UNKNOWN;
  card.base.gsmumtssubscriptionappindex = 0;
  card.base.cdmasubscriptionappindex = -1;
  card.base.imssubscriptionappindex = 1;
  card.base.applications = {
      MakeApp(APPTYPE_USIM, "A0000000871002FF49FF0589", "USIM"),
      MakeApp(APPTYPE_ISIM, "A0000000871004FF49FF0589", "ISIM"),
      MakeApp(APPTYPE_CSIM, "A0000003431002FF86FF0389", "CSIM"),
  };
  return response;
}

ImsCallStateChangedRecord MakeImsCallStateChanged() {
  ImsCallStateChangedRecord indication{QCOM, 0, {}};
  for (int i = 1; i <= 3; ++i) {
    QImsCallRecord call = MakeCall<QImsCallRecord>(i);
    call.state = i == 1 ? IMS_CALL_ACTIVE : IMS_CALL_HOLDING;
    call.audiocodec = QIMS_CODEC_AMR_WB;
    call.calltype = QIMS_VOICE;
    call.callrat = CALL_RAT_LTE;
    indication.calls.push_back(call);
  }
  return indication;
}

}  // namespace virtual_modem::bench
