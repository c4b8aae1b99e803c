// What is particular to one message or enumeration: written down by hand, so that a slip of the
// schema shows up here.
#include <gtest/gtest.h>
#include <virtual_modem/call_size.pb.h>
#include <virtual_modem/conference.pb.h>
#include <virtual_modem/data_share.pb.h>
#include <virtual_modem/ims_service.pb.h>
#include <virtual_modem/radio.pb.h>

#include <algorithm>
#include <cstdint>
#include <limits>
#include <ostream>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "support/message_types.h"
#include "support/wire.h"

namespace virtual_modem::testing {
namespace {

using wire::BytesField;
using wire::Hex;
using wire::VarintField;

template <typename M>
M Parse(const std::string& bytes) {
  M message;
  EXPECT_TRUE(message.ParsePartialFromString(bytes)) << Hex(bytes);
  return message;
}

// ---- Enumerations
// ---------------------------------------------------------------------------------

struct NumberSet {
  std::string_view name;
  std::vector<std::pair<int, int>> ranges;  // first and last declared number, ascending
};

void PrintTo(const NumberSet& set, std::ostream* out) { *out << set.name; }

class SparseEnum : public ::testing::TestWithParam<NumberSet> {};

TEST_P(SparseEnum, DeclaresTheseNumbersOnly) {
  const auto& [name, ranges] = GetParam();
  const std::vector<EnumType>& types = AllEnumTypes();
  const auto type = std::find_if(types.begin(), types.end(), [&](const EnumType& each) {
    return each.name == GetParam().name;
  });
  ASSERT_NE(type, types.end());
  for (int number = ranges.front().first - 2; number <= ranges.back().second + 2; ++number) {
    const bool declared = std::any_of(ranges.begin(), ranges.end(), [number](const auto& range) {
      return range.first <= number && number <= range.second;
    });
    EXPECT_EQ(type->is_valid(number), declared) << number;
  }
}

INSTANTIATE_TEST_SUITE_P(
    All, SparseEnum,
    ::testing::Values(
        NumberSet{"Radio_Errno", {{0, 27}, {36, 66}, {501, 525}}},
        NumberSet{"Qti_Radio_Errno", {{0, 27}, {36, 72}, {501, 525}, {1001, 1018}}},
        NumberSet{
            "LastCallFailCause",
            {{1, 1},        {3, 3},     {6, 6},       {8, 8},       {16, 19},       {21, 22},
             {25, 25},      {27, 31},   {34, 34},     {38, 38},     {41, 44},       {47, 47},
             {49, 50},      {55, 55},   {57, 58},     {63, 63},     {65, 65},       {68, 70},
             {79, 79},      {81, 81},   {87, 88},     {91, 91},     {95, 102},      {111, 111},
             {127, 127},    {240, 261}, {1000, 1009}, {2100, 2100}, {11000, 11003}, {61441, 61455},
             {65535, 65535}}},
        NumberSet{"QtiCallFailCause",
                  {{0, 1},     {3, 3},     {6, 6},       {8, 8},         {16, 22},      {25, 25},
                   {27, 31},   {34, 34},   {38, 38},     {41, 44},       {47, 47},      {49, 50},
                   {55, 55},   {57, 58},   {63, 63},     {65, 65},       {68, 70},      {79, 79},
                   {81, 81},   {87, 88},   {91, 91},     {95, 102},      {111, 111},    {127, 127},
                   {240, 261}, {325, 326}, {1000, 1103}, {61441, 61455}, {65535, 65535}}},
        NumberSet{"RegistrationFailCause",
                  {{0, 0},
                   {2, 17},
                   {20, 23},
                   {25, 26},
                   {32, 34},
                   {38, 38},
                   {48, 63},
                   {95, 101},
                   {111, 111}}},
        NumberSet{"RadioEutranBands",
                  {{1, 14},
                   {17, 28},
                   {30, 31},
                   {33, 53},
                   {65, 66},
                   {68, 68},
                   {70, 74},
                   {85, 85},
                   {87, 88}}},
        NumberSet{"RadioRegState", {{0, 5}, {10, 10}, {12, 14}}},
        NumberSet{"RadioPrlIndicator", {{-1, 1}}},
        NumberSet{"Proto_RadioState", {{0, 1}, {10, 10}}},
        NumberSet{"Proto_EmergencyServiceCategory",
                  {{0, 2}, {4, 4}, {8, 8}, {16, 16}, {32, 32}, {64, 64}}},
        NumberSet{"CdmaRedirectingReason", {{0, 2}, {9, 10}, {15, 16}}},
        NumberSet{"RadioCallInfoType", {{0, 4}, {10, 10}, {100, 100}}},
        NumberSet{"SmsAckFailCause", {{211, 211}, {255, 255}}}),
    [](const auto& info) { return std::string(info.param.name); });

// The names are a contract with other programs, as they are spelled.
TEST(Spelling, OfEnumerationValues) {
  EXPECT_EQ(PlatformType_Name(0), "UNKNOW");
  EXPECT_EQ(ImsCallState_Name(0), "IMS_CALL_UNKNOW");
  EXPECT_EQ(CallRat_Name(0), "CALL_RAT_UNKNOW");
  EXPECT_EQ(CallDomain_Name(0), "CALL_DOMAIN_UNKNOW");
  EXPECT_EQ(LastCallFailCause_Name(11001), "CAUSE_VIRTUAL_MODEM_SESSION_UNAVALIBLE");
  EXPECT_EQ(LastCallFailCause_Name(11002), "CAUSE_VIRTUAL_MODEM_CALL_CAPABILITY_UNAVALIBLE");
  EXPECT_EQ(DeviceType_Name(1), "COMSUMER");
  EXPECT_EQ(QtiCallFailCause_Name(1010), "VIR_INCOMPATIBILITY_DESTINATION");
  DeviceType device = PROVIDER;
  EXPECT_FALSE(DeviceType_Parse("CONSUMER", &device));
}

TEST(Spelling, OfMessages) {
  for (const std::string_view name :
       {"CellIndentityGsm", "CellIndentityWcdma", "CellIndentityLte", "CellIndentityTdscdma",
        "CellIdentityCdma", "CellIdentityNr", "CellIdentity", "V1_2_CardStatus", "SendGSMSms",
        "SendGsmSmsResponse", "virtualdata.proto.SlaveSetupDataCallRequest"}) {
    EXPECT_NE(FindMessageType(name), nullptr) << name;
  }
}

TEST(TypeName, OfTheDataShareUnitCarriesItsPackage) {
  int found = 0;
  for (const MessageType& type : AllMessageTypes()) {
    const bool has_package = type.prototype.GetTypeName().rfind("virtualdata.proto.", 0) == 0;
    EXPECT_EQ(has_package, type.unit == "data_share") << type.name;
    found += has_package ? 1 : 0;
  }
  EXPECT_EQ(found, 11);
}

// ---- Defaults
// -------------------------------------------------------------------------------------

TEST(Default, IsTheFirstValueWhereAnEnumerationHasNoZero) {
  AckLastGsmSms ack;
  ImsSmsMessage sms;
  LastCallFailureCauseResponse cause;
  for (int round = 0; round < 2; ++round) {
    EXPECT_EQ(ack.cause(), 211);
    EXPECT_FALSE(ack.has_cause());
    EXPECT_EQ(sms.tech(), 1);
    EXPECT_FALSE(sms.has_tech());
    EXPECT_EQ(cause.causecode(), 1);
    EXPECT_FALSE(cause.has_causecode());
    ack.set_cause(static_cast<SmsAckFailCause>(255));
    sms.set_tech(THREE_GPP2);
    cause.set_causecode(BUSY);
    ack.Clear();
    sms.Clear();
    cause.Clear();
  }
}

TEST(Default, OfAnEnumerationStaysWhenTheNumberIsUndeclared) {
  for (const int number : {0, 212, 254}) {
    const auto ack = Parse<AckLastGsmSms>(VarintField(4, number));
    EXPECT_EQ(ack.cause(), 211);
    EXPECT_FALSE(ack.has_cause());
    EXPECT_EQ(Hex(ack.SerializePartialAsString()), Hex(VarintField(4, number)));
  }
  EXPECT_EQ(Parse<ImsSmsMessage>(VarintField(3, 3)).tech(), THREE_GPP);
}

TEST(Default, OfJoinedCallIdIsMinusOne) {
  EconfResultIndication result;
  const auto expect_default = [&result] {
    EXPECT_EQ(result.joinedcallid(), "-1");
    EXPECT_FALSE(result.has_joinedcallid());
    EXPECT_EQ(result.ByteSizeLong(), 0U);
  };
  expect_default();
  result.set_joinedcallid("");
  EXPECT_TRUE(result.has_joinedcallid());
  EXPECT_EQ(Hex(result.SerializePartialAsString()), "32 00");
  result.clear_joinedcallid();
  expect_default();
  *result.mutable_joinedcallid() += "7";
  EXPECT_EQ(result.joinedcallid(), "-17");
  result.Clear();
  expect_default();
  EconfResultIndication other;
  result.set_joinedcallid("-1");
  result.Swap(&other);
  expect_default();
  EXPECT_EQ(Hex(other.SerializePartialAsString()), "32 02 2d 31");
}

// ---- Bytes
// ----------------------------------------------------------------------------------------

TEST(WireBytes, SignIsChosenFieldByField) {
  constexpr std::uint32_t kAll = std::numeric_limits<std::uint32_t>::max();
  LteSignalStrength lte;
  lte.set_rsrp(kAll);
  lte.set_rssnr(-5);
  EXPECT_EQ(Hex(lte.SerializePartialAsString()),
            "10 ff ff ff ff 0f 20 fb ff ff ff ff ff ff ff ff 01");
  WcdmaSignalStrength wcdma;
  wcdma.set_signalstrength(-1);
  wcdma.set_rscp(kAll);
  EXPECT_EQ(wcdma.ByteSizeLong(), 11U + 6U);
  V1_2_CardStatus card;
  card.mutable_base()->set_gsmumtssubscriptionappindex(-1);
  card.set_physicalslotid(kAll);
  EXPECT_EQ(card.ByteSizeLong(), 2U + 11U + 6U);
  CdmaInformationRecord record;
  record.set_clir(kAll);
  record.mutable_number()->set_numbertype(-1);
  EXPECT_EQ(record.ByteSizeLong(), 6U + 2U + 11U);
  virtualdata::proto::SlaveSetupDataCallRequest call;
  call.set_value1(-1);
  EXPECT_EQ(call.ByteSizeLong(), 11U);
  virtualdata::proto::MasterSlaveShareConfirmReq confirm;
  confirm.set_value(kAll);
  EXPECT_EQ(confirm.ByteSizeLong(), 6U);
}

// The two registration responses hold the same records in opposite orders.
TEST(WireBytes, NrRecordsOfTheRegistrationResponses) {
  RegistrationResponse voice;
  voice.mutable_nrindicators();
  voice.mutable_nrvopsinfo();
  EXPECT_EQ(Hex(voice.SerializePartialAsString()), "7a 00 82 01 00");
  EXPECT_TRUE(Parse<RegistrationResponse>(BytesField(15, "")).has_nrvopsinfo());
  DataRegistrationResponse data;
  data.mutable_nrindicators();
  data.mutable_nrvopsinfo();
  EXPECT_EQ(Hex(data.SerializePartialAsString()), "4a 00 52 00");
  EXPECT_TRUE(Parse<DataRegistrationResponse>(BytesField(9, "")).has_nrindicators());
}

TEST(WireBytes, UnusedFieldNumberIsUnknown) {
  const std::string known = VarintField(9, 9) + VarintField(12, 12);
  const std::string unused = VarintField(10, 10);
  EXPECT_EQ(Hex(Parse<CellIndentityTdscdma>(unused + known).SerializeAsString()),
            Hex(known + unused));
}

TEST(WireBytes, PackedDigitsAreAccepted) {
  const auto address = Parse<CdmaSmsAddress>("\x2a\x02\x01\x09");
  ASSERT_EQ(address.digits_size(), 2);
  EXPECT_EQ(address.digits(1), 9);
  EXPECT_EQ(Hex(address.SerializePartialAsString()), "28 01 28 09");
}

// Two names for one layout: the bytes of one are bytes of the other.
TEST(WireBytes, TwinsReadEachOther) {
  ImsRegistrationInfoInd registration;
  registration.set_platformtype(PlatformType_MAX);
  registration.set_status(-1);
  registration.set_capability(5);
  ImsCallRatIndicationInd twin;
  ASSERT_TRUE(twin.ParseFromString(registration.SerializeAsString()));
  EXPECT_EQ(twin.value1(), -1);
  EXPECT_EQ(twin.value2(), 5);
}

// Codes that travel as plain numbers are not checked against the enumeration that names them.
TEST(WireBytes, PlainNumbersAreNotValidated) {
  RegistrationResponse response;
  response.set_reasonfordenial(1);
  response.set_systemisinprl(-2);
  const auto read = Parse<RegistrationResponse>(response.SerializePartialAsString());
  EXPECT_EQ(read.reasonfordenial(), 1);
  EXPECT_EQ(read.systemisinprl(), -2);
}

// ---- Presence and initialization
// ------------------------------------------------------------------

TEST(Presence, PayloadsDoNotExcludeEachOther) {
  CdmaInformationRecord record;
  record.set_name(SIGNAL);
  record.mutable_number();
  record.mutable_redir();
  EXPECT_TRUE(record.has_number());
  CellIdentity cell;
  cell.mutable_cellindentitygsm();
  cell.mutable_cellindentitylte();
  EXPECT_EQ(Hex(cell.SerializeAsString()), "12 00 22 00");
}

TEST(Presence, ClearedNotificationKeepsItsObject) {
  QImsCall call;
  SuppSvcNotificationPb* const notification = call.mutable_suppsvcnotification();
  notification->set_number("12345");
  call.clear_suppsvcnotification();
  EXPECT_FALSE(call.has_suppsvcnotification());
  EXPECT_EQ(call.suppsvcnotification().number(), "");
  EXPECT_EQ(call.mutable_suppsvcnotification(), notification);
  EXPECT_FALSE(notification->has_number());
}

TEST(Initialization, IsAskedOfEveryDepth) {
  IccCardStatusResponse card;
  card.set_platformtype(UNKNOW);
  card.set_serial(1);
  card.set_error(RADIO_E_SUCCESS);
  V1_2_CardStatus& status = *card.mutable_cardstatus();
  status.set_physicalslotid(0);
  status.set_atr("");
  status.set_iccid("");
  V1_0_CardStatus& base = *status.mutable_base();
  base.set_universalpinstate(PinState_MIN);
  base.set_gsmumtssubscriptionappindex(-1);
  base.set_cdmasubscriptionappindex(-1);
  base.set_imssubscriptionappindex(-1);
  EXPECT_FALSE(card.IsInitialized());
  base.set_cardstate(CardState_MIN);
  EXPECT_TRUE(card.IsInitialized());
  base.add_applications();
  EXPECT_FALSE(card.IsInitialized());

  CdmaInformationRecordsInd records;
  records.set_platformtype(UNKNOW);
  records.add_records()->set_name(SIGNAL);
  EXPECT_TRUE(records.IsInitialized());
  CdmaSignalInfoRecord& signal = *records.add_records()->mutable_signal();
  signal.set_ispresent(true);
  signal.set_signaltype(0);
  signal.set_alertpitch(0);
  EXPECT_FALSE(records.IsInitialized());
  signal.set_signal(0);
  EXPECT_TRUE(records.IsInitialized());
}

TEST(Initialization, AsksOnlyForPayloadsThatArePresent) {
  ImsSmsMessage sms;
  sms.set_platformtype(UNKNOW);
  sms.set_serial(1);
  sms.set_tech(THREE_GPP);
  sms.set_retry(false);
  sms.set_messageref(0);
  EXPECT_TRUE(sms.IsInitialized());
  sms.mutable_gsmmessage()->set_smscpdu("");
  EXPECT_FALSE(sms.IsInitialized());
  sms.mutable_gsmmessage()->set_pdu("");
  EXPECT_TRUE(sms.IsInitialized());
  sms.mutable_cdmamessage();
  EXPECT_FALSE(sms.IsInitialized());

  ImsCallStateChanged calls;
  calls.set_platformtype(UNKNOW);
  calls.set_value(0);
  EXPECT_TRUE(calls.IsInitialized());
  calls.add_calls();
  EXPECT_FALSE(calls.IsInitialized());
}

TEST(Initialization, OfASignalReportNeedsAllSevenRecords) {
  // Every field of every record is a varint, numbered from 1; six are the most.
  std::string record;
  for (int field = 1; field <= 6; ++field) record += VarintField(field, 0);
  for (int missing = 0; missing <= 7; ++missing) {
    std::string report;
    for (int field = 1; field <= 7; ++field) {
      if (field != missing) report += BytesField(field, record);
    }
    const auto changed = Parse<SignalStrengthChanged>(VarintField(1, 0) + BytesField(2, report));
    EXPECT_EQ(changed.IsInitialized(), missing == 0) << missing;
  }
}

// The loose and the strict participant differ in nothing else.
TEST(Initialization, OfParticipantsIsStrictInOneListOnly) {
  ImsConferenceParticipants strict;
  EXPECT_TRUE(strict.IsInitialized());
  strict.add_participants()->set_text1("1");
  EXPECT_FALSE(strict.IsInitialized());
  ConferenceParticipant loose;
  loose.add_participants()->set_text1("1");
  EXPECT_TRUE(loose.IsInitialized());
}

}  // namespace
}  // namespace virtual_modem::testing
