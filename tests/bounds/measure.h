// What reading some bytes costs, in heap.
#pragma once

#include <cstddef>
#include <string_view>

#include "bounds/counting_allocator.h"
#include "support/message_types.h"

namespace virtual_modem::testing {

// The most heap in use at once while the bytes are read into a new message, in bytes; the message
// object itself included, the input not.
inline std::size_t PeakOfParse(const MessageType& type, std::string_view bytes) {
  ResetHeapPeak();
  const std::size_t before = HeapInUse();
  const auto message = type.create();
  message->ParsePartialFromArray(bytes.data(), static_cast<int>(bytes.size()));
  return HeapPeak() - before;
}

}  // namespace virtual_modem::testing
