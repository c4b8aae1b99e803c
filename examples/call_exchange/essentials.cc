#include "call_exchange/essentials.h"

#include <algorithm>
#include <sstream>
#include <type_traits>

#include "call_exchange/visit.h"

namespace virtual_modem::exchange {
namespace {

namespace share = ::virtualdata::proto;

template <typename M, typename = void>
constexpr bool kHasSerial = false;
template <typename M>
constexpr bool kHasSerial<M, std::void_t<decltype(std::declval<M>().has_serial())>> = true;

template <typename M, typename = void>
constexpr bool kHasError = false;
template <typename M>
constexpr bool kHasError<M, std::void_t<decltype(std::declval<M>().has_error())>> = true;

struct Serial {
  std::optional<std::int32_t> value;

  template <typename M>
  void operator()(const M& message) {
    if constexpr (kHasSerial<M>) {
      if (message.has_serial()) value = message.serial();
    }
  }
};

// The last word of a value's name, which tells it from its neighbors: "active" for
// RADIO_CALL_ACTIVE.
std::string Short(const std::string& name) {
  std::string text = name.substr(name.rfind('_') + 1);
  std::transform(text.begin(), text.end(), text.begin(),
                 [](unsigned char c) { return std::tolower(c); });
  return text;
}

struct Writer {
  std::ostringstream out;

  // Between the elements of a list.
  std::ostream& Separate() {
    if (out.tellp() > 0) out << "; ";
    return out;
  }

  // Responses of which only the outcome matters here, and everything else.
  template <typename M>
  void operator()(const M& message) {
    if constexpr (kHasError<M>) {
      if (message.has_error()) out << Radio_Errno_Name(message.error());
    }
  }

  void operator()(const Dial& dial) {
    out << (dial.has_address() ? dial.address() : "no number") << ", " << Clir_Name(dial.clir());
  }

  void operator()(const Hangup& hangup) { out << "call " << hangup.gsmindex(); }

  void operator()(const GetCurrentCallsResponse& response) {
    for (const Call& call : response.calls()) {
      Separate() << call.index() << ' ' << Short(RadioCallState_Name(call.state())) << ' '
                 << call.number();
    }
    if (response.calls().empty()) out << "no call";
  }

  void operator()(const LastCallFailureCauseResponse& response) {
    out << LastCallFailCause_Name(response.causecode()) << " (" << response.causecode() << "), "
        << response.vendorcause();
  }

  void operator()(const RegistrationResponse& response) {
    const CellIndentityLte& cell = response.cellidentity().cellindentitylte();
    out << RadioRegState_Name(response.regstate()) << ", " << Technology_Name(response.rat())
        << ", cell " << cell.ci();
  }

  void operator()(const OperatorResponse& response) {
    out << response.alphalong() << ", PLMN " << response.numeric();
  }

  void operator()(const VoiceRadioTechChanged& indication) {
    out << (indication.has_technology() ? Technology_Name(indication.technology())
                                        : "technology not known here");
  }

  void operator()(const IccCardStatusResponse& response) {
    const V1_2_CardStatus& card = response.cardstatus();
    out << CardState_Name(card.base().cardstate()) << ", ICCID " << card.iccid();
    for (const AppStatus& app : card.base().applications()) {
      Separate() << Short(AppType_Name(app.apptype())) << ' '
                 << Short(AppState_Name(app.appstate()));
    }
  }

  void operator()(const GetSignalStrengthResponse& response) {
    const LteSignalStrength& lte = response.signalstrength().lte();
    out << "LTE: RSRP -" << lte.rsrp() << " dBm, RSRQ -" << lte.rsrq() << " dB";
  }

  void operator()(const SendGSMSms& request) { out << "TPDU " << request.pdu(); }

  void operator()(const ImsSmsMessage& request) {
    out << RadioTechnologyFamily_Name(request.tech());
    if (request.has_cdmamessage()) (*this)(request.cdmamessage());
  }

  void operator()(const CdmaSmsMessage& message) {
    Separate() << message.address().digits_size() << " digits, " << message.bearerdata_size()
               << " bytes of bearer data";
  }

  void operator()(const SendGsmSmsResponse& response) { Sent(response); }
  void operator()(const SendCdmaSmsResponse& response) { Sent(response); }
  template <typename M>
  void Sent(const M& response) {
    out << Radio_Errno_Name(response.error()) << ", reference " << response.result().messageref();
  }

  void operator()(const CdmaSmsAck& ack) { out << CdmaSmsErrorClass_Name(ack.errorclass()); }

  void operator()(const ImsCallStateChanged& indication) {
    for (const QImsCall& call : indication.calls()) {
      Separate() << call.index() << ' ' << Short(ImsCallState_Name(call.state())) << " on "
                 << Short(CallRat_Name(call.callrat())) << (call.ismpty() ? " (mpty)" : "");
    }
    if (indication.calls().empty()) out << "no call";
  }

  void operator()(const HandoverInfo& handover) {
    out << NameOr(QtiHandoverType_Name(static_cast<QtiHandoverType>(handover.type())),
                  handover.type())
        << ' ' << Tech(handover.srctech()) << " -> " << Tech(handover.targettech());
  }
  // Plain int32 fields: a number without a name is shown as it is.
  static std::string NameOr(const std::string& name, std::int32_t number) {
    return name.empty() ? std::to_string(number) : name;
  }
  static std::string Tech(std::int32_t number) {
    return NameOr(QRadioTechType_Name(static_cast<QRadioTechType>(number)), number);
  }

  void operator()(const EconfResultIndication& indication) {
    out << indication.text1() << ", joined call " << indication.joinedcallid();
  }

  void operator()(const ImsConferenceParticipants& indication) {
    for (const ImsParticipant& participant : indication.participants()) {
      Separate() << participant.text1() << ' ' << participant.text2();
    }
  }

  void operator()(const share::MasterSlaveShareConfirmReq& request) {
    out << "share " << request.value();
  }

  void operator()(const share::MasterSlaveShareConfirmRsp& response) {
    out << (response.result() ? "confirmed" : "declined");
  }

  void operator()(const share::MasterSlaveNetworkInfoUpdate& update) {
    out << update.text6();
    for (const std::string& address : update.list2()) out << ' ' << address;
  }

  void operator()(const share::MasterSlaveNetworkInfoResp& response) {
    out << (response.value2() == 0 ? "usable" : "not usable");
  }

  void operator()(const share::SlaveSetupDataCallRequest& request) {
    out << "share " << request.value1() << ", profile " << request.value2();
  }

  void operator()(const share::RemoteDataShareReleaseReq& request) {
    out << "share " << request.value1();
  }

  void operator()(const share::SlaveSetupDataCallResponse& response) {
    out << "data call " << response.value4();
    for (const std::string& address : response.list8()) out << ' ' << address;
  }

  void operator()(const share::SlaveMasterShareDataChange& change) { out << change.text(); }

  void operator()(const share::SlaveDeactivateDataCallRequest& request) {
    out << "data call " << request.value2();
  }
};

}  // namespace

std::string Essentials(const MessageLite& message) {
  Writer writer;
  Visit(writer, message);
  std::string text = writer.out.str();
  // Strings come from the peer: keep control characters off the terminal.
  std::replace_if(
      text.begin(), text.end(), [](unsigned char c) { return c < ' ' || c > '~'; }, '?');
  return text;
}

std::optional<std::int32_t> SerialOf(const MessageLite& message) {
  Serial serial;
  Visit(serial, message);
  return serial.value;
}

}  // namespace virtual_modem::exchange
