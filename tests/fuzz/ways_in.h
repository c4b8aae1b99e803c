// The ways in which bytes of a stranger may come into a message. Left out are the reads up to a
// bound within a stream (ParseFromBoundedZeroCopyStream and its like), which such bytes can make
// throw: see docs/hostile-input.md.
#pragma once

#include <google/protobuf/message_lite.h>

#include <string_view>
#include <vector>

namespace virtual_modem::testing {

struct WayIn {
  std::string_view name;
  // True when the message is made of all the bytes; required fields may be missing. `chunk`: how
  // many bytes a stream hands out at once, where this way lets one choose.
  bool (*parse)(google::protobuf::MessageLite& message, std::string_view bytes, int chunk);
};

const std::vector<WayIn>& WaysIn();

}  // namespace virtual_modem::testing
