// What the example plays: one function a scenario, each in a file of its own under scenarios/.
#pragma once

#include <array>
#include <string_view>

#include "call_exchange/telephony.h"

namespace example {

struct Scenario {
  std::string_view name;
  std::string_view what;
  void (*play)(Telephony& telephony);  // throws std::runtime_error
};

void PlayCall(Telephony& telephony);
void PlayStatus(Telephony& telephony);
void PlaySms(Telephony& telephony);
void PlayIms(Telephony& telephony);
void PlayDataShare(Telephony& telephony);

inline constexpr std::array kScenarios{
    Scenario{"call", "register, dial, talk, hang up; a bad request; a newer peer", PlayCall},
    Scenario{"status", "the SIM card and the signal", PlayStatus},
    Scenario{"sms", "a GSM message; a CDMA message over IMS, its reply acknowledged", PlaySms},
    Scenario{"ims", "an IMS call moves from LTE to Wi-Fi; a conference", PlayIms},
    Scenario{"data-share", "a master shares its connection (virtualdata.proto)", PlayDataShare},
};

}  // namespace example
