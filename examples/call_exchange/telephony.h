// The telephony side: sends requests, expects responses and indications.
#pragma once

#include <cstdint>
#include <string>
#include <utility>

#include "call_exchange/endpoint.h"
#include "call_exchange/timeline.h"
#include "virtual_modem/radio.pb.h"

namespace virtual_modem::exchange {

// What the user may set.
struct Settings {
  std::string number = "+861012345678";
  Clir clir = CLIR_DEFAULT;
};

class Telephony {
 public:
  Telephony(Endpoint& endpoint, Timeline& timeline, Settings settings)
      : endpoint_(endpoint), timeline_(timeline), settings_(std::move(settings)) {}

  const Settings& settings() const { return settings_; }
  Timeline& timeline() { return timeline_; }

  // A cleared M to fill and send.
  template <typename M>
  M& Draft() {
    return endpoint_.Draft<M>();
  }

  void Send(const MessageLite& message, Operation operation = Operation::kByType) {
    endpoint_.Send(message, operation);
  }

  // The next message, which must be an M, initialized unless `partial`. Valid until the next M.
  // Throws LinkError otherwise, as do the functions below.
  template <typename M>
  const M& Expect(bool partial = false) {
    return static_cast<const M&>(Expect(M::default_instance(), partial));
  }

  // Sends `request` under the next serial and returns the response to it. The outcome must be
  // `expected`.
  template <typename Response, typename Request>
  const Response& Ask(Request& request, Operation operation = Operation::kByType,
                      Radio_Errno expected = RADIO_E_SUCCESS) {
    request.set_platformtype(QCOM);
    request.set_serial(++serial_);
    Send(request, operation);
    const Response& response = Expect<Response>();
    CheckAnswer(response.serial(), response.error(), expected);
    return response;
  }

  // The same for an operation without parameters.
  template <typename Response>
  const Response& Ask(Operation operation) {
    return Ask<Response>(Draft<NoParmRequest>(), operation);
  }

 private:
  const MessageLite& Expect(const MessageLite& prototype, bool partial);
  void CheckAnswer(std::int32_t serial, Radio_Errno error, Radio_Errno expected) const;

  Endpoint& endpoint_;
  Timeline& timeline_;
  Settings settings_;
  std::int32_t serial_ = 0;
};

}  // namespace virtual_modem::exchange
