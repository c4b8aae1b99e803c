// One short message over GSM; one over IMS in CDMA form, whose answer comes in and is acknowledged.
#include <algorithm>

#include "call_exchange/scenarios.h"

namespace example {
namespace {

constexpr int kDeliver = 1;  // message type of an incoming short message (3GPP2 C.S0015 4.5.1)

// Destination address of a TPDU as hex: number of digits, type of address, the digits with the
// halves of each byte swapped (TS 23.040 9.1.2.5).
std::string GsmAddress(const std::string& number) {
  const bool international = number[0] == '+';
  std::string digits = number.substr(international ? 1 : 0);
  std::replace(digits.begin(), digits.end(), '*', 'A');
  std::replace(digits.begin(), digits.end(), '#', 'B');
  constexpr const char* kHex = "0123456789ABCDEF";
  std::string text{kHex[digits.size() / 16], kHex[digits.size() % 16]};
  text += international ? "91" : "81";
  if (digits.size() % 2 == 1) digits += 'F';
  for (std::size_t at = 0; at < digits.size(); at += 2) text += {digits[at + 1], digits[at]};
  return text;
}

void SendOverGsm(Telephony& telephony) {
  SendGSMSms sms;
  sms.set_smscpdu("00");  // the service center that the SIM names
  // SMS-SUBMIT, reference 0, the destination, protocol 0, default alphabet, 5 characters "hello".
  sms.set_pdu("0100" + GsmAddress(telephony.settings().number) + "000005E8329BFD06");
  telephony.Ask<SendGsmSmsResponse>(sms);
}

void SendCdmaOverIms(Telephony& telephony) {
  ImsSmsMessage sms;
  sms.set_tech(THREE_GPP2);
  sms.set_retry(false);
  sms.set_messageref(0);
  CdmaSmsMessage& message = *sms.mutable_cdmamessage();
  message.set_teleserviceid(0x1002);  // wireless messaging (3GPP2 C.S0015)
  message.set_isservicepresent(false);
  message.set_servicecategory(0);
  CdmaSmsAddress& address = *message.mutable_address();
  address.set_digitmode(DIGIT_MODE_EIGHT_BIT);
  address.set_isnumbermodedatanetwork(false);
  address.set_numbertype(telephony.settings().number[0] == '+'
                             ? NUMBER_TYPE_INTERNATIONAL_OR_DATA_IP
                             : NUMBER_TYPE_UNKNOWN);
  address.set_numberplan(NUMBER_PLAN_TELEPHONY);
  for (const char digit : telephony.settings().number) {
    if (digit != '+') address.add_digits(digit);
  }
  message.mutable_subaddress()->set_subaddresstype(SUBADDRESS_TYPE_NSAP);
  message.mutable_subaddress()->set_odd(false);
  // Message identifier (submit, number 1) and user data: "hi" in 8-bit octets (3GPP2 C.S0015 4.5).
  for (const int byte : {0x00, 0x03, 0x20, 0x00, 0x10, 0x01, 0x04, 0x00, 0x13, 0x43, 0x48}) {
    message.add_bearerdata(byte);
  }
  telephony.Ask<SendCdmaSmsResponse>(sms);
}

void AcknowledgeIncoming(Telephony& telephony) {
  const auto incoming = telephony.Expect<CdmaSmsMessage>();
  // The first entry of the bearer data is its message identifier, whose upper half-byte is the
  // type.
  telephony.Require(incoming.bearerdata_size() >= 3 && incoming.bearerdata(2) >> 4 == kDeliver,
                    "the incoming short message is not one that was delivered");
  CdmaSmsAck ack;
  ack.set_errorclass(NO_ERROR);
  ack.set_smscausecode(0);
  telephony.Ask<NoResultResponse>(ack);
}

}  // namespace

void PlaySms(Telephony& telephony) {
  SendOverGsm(telephony);
  SendCdmaOverIms(telephony);
  AcknowledgeIncoming(telephony);
}

}  // namespace example
