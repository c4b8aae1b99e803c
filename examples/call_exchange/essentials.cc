#include "call_exchange/essentials.h"

#include <algorithm>
#include <sstream>
#include <type_traits>

#include "call_exchange/visit.h"

namespace virtual_modem::exchange {
namespace {

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

// The part of a value's name that tells it from its neighbors: "active" for RADIO_CALL_ACTIVE.
std::string Short(const std::string& name, std::size_t prefix) {
  std::string text = name.substr(std::min(prefix, name.size()));
  std::transform(text.begin(), text.end(), text.begin(),
                 [](unsigned char c) { return std::tolower(c); });
  return text;
}

struct Writer {
  std::ostringstream out;

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
      out << "call " << call.index() << ' '
          << Short(RadioCallState_Name(call.state()), sizeof("RADIO_CALL")) << ' ' << call.number();
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
