// What stands around the frames of a capture: packet, record and file, as docs/captures.md
// describes them. Free of the protobuf runtime, so that programs of the lite and of the full one
// can both compile it in.
#pragma once

#include <virtual_modem/frame.h>

#include <cstddef>
#include <cstdint>
#include <ctime>
#include <string>

namespace virtual_modem::capture {

inline constexpr std::size_t kFileHeaderBytes = 24;
inline constexpr std::size_t kRecordHeaderBytes = 16;
inline constexpr std::size_t kIpHeaderBytes = 20;
inline constexpr std::size_t kUdpHeaderBytes = 8;
inline constexpr std::size_t kMaxPacketBytes = 65535;
// Beside the longest name of a type.
inline constexpr std::size_t kMaxMessageBytes =
    kMaxPacketBytes - kIpHeaderBytes - kUdpHeaderBytes - kFrameHeaderBytes - kMaxTypeNameBytes;

inline constexpr std::uint16_t kTelephonyPort = 47601;
inline constexpr std::uint16_t kModemPort = 47602;

// Of the times of all records in a file.
enum class Resolution : std::uint8_t { kMicroseconds, kNanoseconds };

void AppendFileHeader(Resolution resolution, std::string& out);

// Appends the record of a frame that was sent at that time. False, and nothing appended, when the
// type has no legal name or the message is over kMaxMessageBytes.
bool AppendRecord(const std::timespec& time, Resolution resolution, Direction direction,
                  const Frame& frame, std::string& out);

}  // namespace virtual_modem::capture
