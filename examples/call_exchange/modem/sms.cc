// Short messages. Agreed between this example's sides, where the schema leaves it open: an
// ImsSmsMessage is answered by the response of its format, and a CDMA message comes in as a
// VirtualCdmaSmsMessage with the address it is from.
#include "call_exchange/modem/modem.h"

namespace virtual_modem::exchange {

template <typename Response>
void Modem::EndSms(std::int32_t serial, Radio_Errno error) {
  auto& response = Answer<Response>(serial);
  response.set_error(error);
  SmsResult& result = *response.mutable_result();
  result.set_messageref(error == RADIO_E_SUCCESS ? ++sms_reference_ : 0);
  result.set_ackpdu("");
  result.set_errorcode(0);
  endpoint_.Send(response);
}

// The party reached over CDMA replies at once, from the address that was written to.
template <typename Sms>
void Modem::ReplyTo(const Sms& sms) {
  auto& incoming = endpoint_.Draft<VirtualCdmaSmsMessage>();
  incoming.set_platformtype(QCOM);
  incoming.set_serial(++incoming_);
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
  EndSms<SendGsmSmsResponse>(request.serial(), RADIO_E_SUCCESS);
}

void Modem::operator()(const ImsSmsMessage& request) {
  const bool gsm = request.tech() == THREE_GPP;
  if (gsm ? !request.has_gsmmessage() : !request.has_cdmamessage()) {
    return Decline(request, RADIO_E_INVALID_SMS_FORMAT);
  }
  if (gsm) return EndSms<SendGsmSmsResponse>(request.serial(), RADIO_E_SUCCESS);
  EndSms<SendCdmaSmsResponse>(request.serial(), RADIO_E_SUCCESS);
  ReplyTo(request.cdmamessage());
}

void Modem::operator()(const VirtualCdmaSmsMessage& request) {
  EndSms<SendCdmaSmsResponse>(request.serial(), RADIO_E_SUCCESS);
  ReplyTo(request);
}

void Modem::operator()(const CdmaSmsAck& request) { Result(request.serial(), RADIO_E_SUCCESS); }

void Modem::Decline(const SendGSMSms& request, Radio_Errno error) {
  if (request.has_serial()) EndSms<SendGsmSmsResponse>(request.serial(), error);
}

void Modem::Decline(const ImsSmsMessage& request, Radio_Errno error) {
  if (!request.has_serial()) return;
  if (request.tech() == THREE_GPP) return EndSms<SendGsmSmsResponse>(request.serial(), error);
  EndSms<SendCdmaSmsResponse>(request.serial(), error);
}

void Modem::Decline(const VirtualCdmaSmsMessage& request, Radio_Errno error) {
  if (request.has_serial()) EndSms<SendCdmaSmsResponse>(request.serial(), error);
}

}  // namespace virtual_modem::exchange
