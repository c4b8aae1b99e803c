// Two processes joined by a socket.
#pragma once

#include <chrono>
#include <functional>

namespace example {

// One side of the exchange; it takes over the socket. Throws std::exception when it cannot go on.
using Side = std::function<void(int socket)>;

// Runs `telephony` in this process and `modem` in a child, joined by a socket of that type
// (SOCK_SEQPACKET or SOCK_STREAM), and returns when both have ended: 0 when both ended well, else
// 1, with one line on stderr for each side that did not. A child that has not ended `timeout` after
// this side is killed.
int RunPair(const Side& telephony, const Side& modem, int socket_type,
            std::chrono::milliseconds timeout);

}  // namespace example
