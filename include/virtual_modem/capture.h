// Records messages in a pcap file, which Wireshark and virtual-modem-inspect read; docs/captures.md
// describes its bytes. Whatever carries the messages, their capture looks the same. Part of
// libvirtual-modem-text; link VirtualModemProtos::text.
//
// Throws only if memory runs out; needs no RTTI.
#pragma once

#include <google/protobuf/message_lite.h>
#include <virtual_modem/frame.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#pragma GCC visibility push(default)

namespace virtual_modem {

struct CaptureOptions {
  bool show_subscriber_data = false;  // else messages are recorded as MaskedBytes() gives them
  // The largest size of a file in bytes, 0 for any. A record that would exceed it begins a new
  // file: the full one is renamed to PATH.1, replacing an older one, so two files hold the latest
  // max_bytes to 2 * max_bytes. A file has at least one record.
  std::uint64_t max_bytes = 0;
  bool append = false;  // to an existing capture; else an existing file is overwritten
};

// Each record is written by one system call and is in the file when Write() returns: a crash of the
// process loses nothing. Several threads may call its functions at once; a file must have only one
// writer at a time.
class CaptureWriter {
 public:
  // Larger messages are not recorded: they do not fit a datagram.
  static constexpr std::size_t kMaxMessageBytes = 65435;

  CaptureWriter();
  ~CaptureWriter();  // as Close()
  CaptureWriter(const CaptureWriter&) = delete;
  CaptureWriter& operator=(const CaptureWriter&) = delete;

  // Opens the file, creating it with mode 0600, and closes the one open before. False if that
  // fails, or if options.append is set and the file is not such a capture, which is then left as it
  // was. Appending drops an incomplete record at the end of the file.
  bool Open(const std::string& path, const CaptureOptions& options = {});

  // Adds a message with the current time. operation says what the message asks for if its type does
  // not (a number that the two sides agree on, 0 for none). False if no file is open, the message
  // is too large or of another library, or the system refuses to write; the file then ends with the
  // last whole record, and the next call may succeed.
  //
  // About 1 us and one system call, more when a file is full.
  bool Write(Direction direction, const google::protobuf::MessageLite& message,
             std::uint8_t operation = 0);

  // The same for bytes that were not parsed: as they are if subscriber data is shown, else as
  // MaskedBytes(type, bytes) returns them. type has 1 to 64 letters, digits, '_' and '.'; a type
  // that the library does not know is recorded, without its bytes if masked.
  bool Write(Direction direction, std::string_view type, std::string_view bytes,
             std::uint8_t operation = 0);

  void Close();

  // Why the last call of Open() or Write() failed, as a text with the path; empty if it did not
  // fail.
  std::string error() const;

 private:
  class File;
  std::unique_ptr<File> file_;
};

}  // namespace virtual_modem

#pragma GCC visibility pop
