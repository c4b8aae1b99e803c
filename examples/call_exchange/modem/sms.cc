// Short messages. Agreed between this example's sides, where the schema leaves it open: an
// ImsSmsMessage is answered by the response of its format, and a CDMA message comes in as a
// CdmaSmsMessage of its own, with the address it is from.
#include <virtual_modem/types.h>

#include "call_exchange/modem/modem.h"

namespace example {

using virtual_modem::As;

template <typename Response>
void Modem::SendSmsResult(std::int32_t serial, Radio_Errno error) {
  auto response = Answer<Response>(serial, error);
  SmsResult& result = *response.mutable_result();
  result.set_messageref(error == RADIO_E_SUCCESS ? ++sms_reference_ : 0);
  result.set_ackpdu("");
  result.set_errorcode(0);
  endpoint_.Send(response);
}

bool Modem::EndSms(const MessageLite& request, std::int32_t serial, Radio_Errno error) {
  const auto* ims = As<ImsSmsMessage>(request);
  if (As<VirtualCdmaSmsMessage>(request) != nullptr ||
      (ims != nullptr && ims->tech() == THREE_GPP2)) {
    SendSmsResult<SendCdmaSmsResponse>(serial, error);
  } else if (As<SendGSMSms>(request) != nullptr || ims != nullptr) {
    SendSmsResult<SendGsmSmsResponse>(serial, error);
  } else {
    return false;
  }
  return true;
}

// The party reached over CDMA replies at once, from the address that was written to.
template <typename Sms>
void Modem::ReplyTo(const Sms& sms) {
  CdmaSmsMessage incoming;
  incoming.set_teleserviceid(sms.teleserviceid());
  incoming.set_isservicepresent(sms.isservicepresent());
  incoming.set_servicecategory(sms.servicecategory());
  *incoming.mutable_address() = sms.address();
  *incoming.mutable_subaddress() = sms.subaddress();
  // Message identifier (deliver, number 1) and user data: "yo" in 8-bit octets (3GPP2 C.S0015 4.5).
  for (const int byte : {0x00, 0x03, 0x10, 0x00, 0x10, 0x01, 0x04, 0x00, 0x13, 0xCB, 0x78}) {
    incoming.add_bearerdata(byte);
  }
  endpoint_.Send(incoming);
}

void Modem::operator()(const SendGSMSms& request) {
  EndSms(request, request.serial(), RADIO_E_SUCCESS);
}

void Modem::operator()(const ImsSmsMessage& request) {
  const bool cdma = request.tech() == THREE_GPP2;
  if (cdma ? !request.has_cdmamessage() : !request.has_gsmmessage()) {
    return Decline(request, RADIO_E_INVALID_SMS_FORMAT);
  }
  EndSms(request, request.serial(), RADIO_E_SUCCESS);
  if (cdma) ReplyTo(request.cdmamessage());
}

void Modem::operator()(const VirtualCdmaSmsMessage& request) {
  EndSms(request, request.serial(), RADIO_E_SUCCESS);
  ReplyTo(request);
}

void Modem::operator()(const CdmaSmsAck& request) { Result(request.serial(), RADIO_E_SUCCESS); }

}  // namespace example
