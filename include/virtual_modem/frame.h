// The frame in which captures and the examples carry a message, for use on your own channels too: a
// message tells neither its type nor its length, and one NoParmRequest asks for something else than
// the next. Part of libvirtual-modem-text; link VirtualModemProtos::text.
//
//   offset  bytes  content
//   0       2      'V' 'M'
//   2       1      operation: what the message asks for if its type does not say; a number that
//                  the two sides agree on, 0 for none
//   3       1      N, length of the type name, 1 to 64
//   4       4      P, length of the message, big-endian
//   8       N      type name, such as "Dial": letters, digits, '_' and '.'
//   8 + N   P      the message
//
// Throws only if memory runs out, needs no RTTI, and allocates only in the buffers that are written
// to. Any thread may call the functions. Only one thread at a time may use a FrameReader, which
// does not lock.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#pragma GCC visibility push(default)

namespace virtual_modem {

// The direction of a message.
enum class Direction : std::uint8_t {
  kToModem,      // most requests
  kToTelephony,  // most responses and indications
};

inline constexpr std::size_t kFrameHeaderBytes = 8;
inline constexpr std::size_t kMaxTypeNameBytes = 64;

struct Frame {
  std::uint8_t operation = 0;
  std::string_view type;
  std::string_view message;  // encoded
};

// Appends the bytes of the frame. False, and nothing appended, if the type name is not valid or the
// message takes 4 GiB or more. <virtual_modem/types.h> has the same for a message.
bool AppendFrame(const Frame& frame, std::string& out);

enum class FrameStatus : std::uint8_t {
  kFrame,
  kMoreNeeded,  // the bytes end within a frame
  // The bytes do not begin a readable frame. After the last two, the next frame cannot be found.
  kTooLarge,  // the message is larger than the caller allows
  kNotAFrame,
  kBadType,  // the type name is not valid
};

// The predicate of a sentence about a frame, such as "does not begin with 'VM'".
inline const char* Explain(FrameStatus status) {
  switch (status) {
    case FrameStatus::kFrame:
      return "is sound";
    case FrameStatus::kMoreNeeded:
      return "is cut short";
    case FrameStatus::kTooLarge:
      return "is larger than allowed";
    case FrameStatus::kNotAFrame:
      return "does not begin with 'VM'";
    case FrameStatus::kBadType:
      return "has no valid type name";
  }
  return "";
}

struct FrameRead {
  FrameStatus status = FrameStatus::kMoreNeeded;
  // Refers into the bytes that were read. Set for kFrame; for kTooLarge it has only the operation
  // and, if the whole name was read, the type.
  Frame frame;
  // For kFrame and kTooLarge, the size of the whole frame. For kMoreNeeded, how many bytes are
  // needed as far as that is known, counted from the beginning of the frame.
  std::uint64_t size = 0;
};

// Reads the frame at the beginning of the bytes; others may follow it. max_message limits the size
// of its message, in bytes, and is checked as soon as the header has been read. Bytes that cannot
// become a frame are refused at the first wrong byte.
FrameRead ReadFrame(std::string_view bytes, std::size_t max_message);

// Reads frames from a stream that comes in pieces of any size:
//
//   reader.Add({buffer, size});  // what read() returned
//   while (const auto read = reader.Next()) {
//     if (read->status == virtual_modem::FrameStatus::kFrame) Receive(read->frame);
//   }
//   if (reader.ended()) Disconnect();
//
// Keeps at most one unfinished frame and what was added since Next() last returned nothing.
class FrameReader {
 public:
  enum class TooLarge : std::uint8_t {
    kEnds,     // ends the stream, as bytes that are not a frame do
    kSkipped,  // is discarded; the next frame is read
  };

  explicit FrameReader(std::size_t max_message, TooLarge too_large = TooLarge::kEnds)
      : max_message_(max_message), too_large_(too_large) {}

  // Takes the bytes that follow those taken before. Ignored after the end.
  void Add(std::string_view bytes) {
    if (ended_) return;
    bytes_.erase(0, at_);
    at_ = 0;
    const auto skipped = static_cast<std::size_t>(std::min<std::uint64_t>(skip_, bytes.size()));
    skip_ -= skipped;
    bytes_.append(bytes.data() + skipped, bytes.size() - skipped);
  }

  // The next frame; or that a message is too large, with its type and size; or, once, the fault
  // that ends the stream. Nothing if more bytes are needed, and after the end. The result refers
  // into the reader until the next Add().
  std::optional<FrameRead> Next() {
    const std::string_view left(bytes_.data() + at_, bytes_.size() - at_);
    const FrameRead read = ReadFrame(left, max_message_);
    const bool too_large = read.status == FrameStatus::kTooLarge;
    // A message that is too large is reported only once its type is known.
    const bool nameless = too_large && read.frame.type.empty();
    if (ended_ || nameless || read.status == FrameStatus::kMoreNeeded) return std::nullopt;
    ended_ = too_large ? too_large_ == TooLarge::kEnds : read.status != FrameStatus::kFrame;
    if (!ended_) {
      const auto there = static_cast<std::size_t>(std::min<std::uint64_t>(read.size, left.size()));
      at_ += there;
      skip_ = read.size - there;
    }
    return read;
  }

  // No frame follows: close the connection.
  bool ended() const { return ended_; }

  // No part of a frame is pending, so the other side may close the connection here.
  bool between_frames() const { return at_ == bytes_.size() && skip_ == 0; }

 private:
  std::size_t max_message_;
  TooLarge too_large_;
  bool ended_ = false;
  std::string bytes_;
  std::size_t at_ = 0;      // where the next frame begins in them
  std::uint64_t skip_ = 0;  // bytes still to come of a frame that is too large
};

}  // namespace virtual_modem

#pragma GCC visibility pop
