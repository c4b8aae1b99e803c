// The command line of call_exchange.
#pragma once

#include <sys/socket.h>

#include <chrono>
#include <optional>
#include <string>
#include <vector>

#include "call_exchange/scenarios.h"

namespace example {

struct Options {
  Settings settings;
  std::chrono::milliseconds timeout{5000};
  int socket_type = SOCK_SEQPACKET;
  bool hex = false;
  bool show = false;                // subscriber data
  std::optional<std::string> pcap;  // path
  std::vector<const Scenario*> scenarios;
};

// Ends the program after --help and --list, with status 0, and with one line on stderr when
// something is wrong, with status 2.
Options ParseOptions(int argc, char** argv);

}  // namespace example
