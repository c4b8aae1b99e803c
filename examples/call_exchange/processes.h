// Two processes joined by a channel.
#pragma once

#include <chrono>
#include <functional>

#include "call_exchange/channel.h"

namespace virtual_modem::exchange {

// One side of the exchange. Throws std::exception when it cannot go on.
using Side = std::function<void(Channel)>;

// Runs `telephony` in this process and `modem` in a child, and returns when both have ended: 0 when
// both ended well, else 1, with one line on stderr for each side that did not. A child that has not
// ended `timeout` after this side is killed. `timeout` bounds every wait on the channel as well.
int RunPair(const Side& telephony, const Side& modem, std::chrono::milliseconds timeout);

}  // namespace virtual_modem::exchange
