// The benchmark's messages as plain records: what a caller holds before it builds a message and
// after it has read one. generate_records.py makes MESSAGERecord for each: its members, Fill() for
// the message class, and Read(), a digest of the message's fields; and ForEachMessage(), which
// calls use(name, record) with what workloads.cc fills in.
#pragma once

#include <virtual_modem/data_share.pb.h>
#include <virtual_modem/ims_service.pb.h>
#include <virtual_modem/radio.pb.h>

#include <cstdint>
#include <string>
#include <vector>

namespace virtual_modem::bench {

// Reading a field: every scalar counts with its value, a text with its length and last byte.
inline std::uint64_t Digest(std::uint64_t value) { return value; }
inline std::uint64_t Digest(const std::string& text) {
  return text.size() + (text.empty() ? 0 : static_cast<unsigned char>(text.back()));
}

#include "records.inc"

}  // namespace virtual_modem::bench
