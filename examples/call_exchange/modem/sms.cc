// Short messages.
#include "call_exchange/modem/modem.h"

namespace virtual_modem::exchange {
namespace {

template <typename Response>
Response& FillResult(Response& response, std::int32_t reference) {
  SmsResult& result = *response.mutable_result();
  result.set_messageref(reference);
  result.set_ackpdu("");
  result.set_errorcode(0);
  return response;
}

}  // namespace

void Modem::operator()(const SendGSMSms& request) {
  endpoint_.Send(FillResult(Answer<SendGsmSmsResponse>(request.serial()), ++sms_reference_));
}

// That the response of the format answers an ImsSmsMessage is agreed between this example's sides;
// the schema leaves it open. The party reached over CDMA replies at once: its message comes in from
// the same address.
void Modem::operator()(const ImsSmsMessage& request) {
  if (request.tech() == THREE_GPP) {
    if (!request.has_gsmmessage()) return Decline(request, RADIO_E_INVALID_SMS_FORMAT);
    endpoint_.Send(FillResult(Answer<SendGsmSmsResponse>(request.serial()), ++sms_reference_));
    return;
  }
  if (!request.has_cdmamessage()) return Decline(request, RADIO_E_INVALID_SMS_FORMAT);
  endpoint_.Send(FillResult(Answer<SendCdmaSmsResponse>(request.serial()), ++sms_reference_));
  endpoint_.Send(request.cdmamessage());
}

void Modem::operator()(const CdmaSmsAck& request) { Result(request.serial(), RADIO_E_SUCCESS); }

}  // namespace virtual_modem::exchange
