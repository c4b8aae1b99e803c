// What the example plays: one function a scenario, each in a file of its own under scenarios/.
#pragma once

#include <array>
#include <string_view>

#include "call_exchange/telephony.h"

namespace virtual_modem::exchange {

struct Scenario {
  std::string_view name;
  std::string_view what;
  void (*play)(Telephony& telephony);  // throws LinkError
};

void PlayCall(Telephony& telephony);

inline constexpr std::array kScenarios{
    Scenario{"call", "register, dial, talk, hang up; a bad request; a newer peer", PlayCall},
};

}  // namespace virtual_modem::exchange
