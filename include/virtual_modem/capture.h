// Records messages in a pcap file, which Wireshark and virtual-modem-inspect read; docs/captures.md
// describes its bytes. Whatever carries the messages, their capture looks the same. Part of
// libvirtual-modem-text; link VirtualModemProtos::text.
//
// Nothing throws but for lack of memory; no RTTI is needed.
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
  // The size of a file in bytes, 0 for any. A record that would make the file larger begins a new
  // one: the full file is renamed to PATH.1, whose former content is lost, so two files hold the
  // latest max_bytes to 2 * max_bytes. At least one record goes into a file.
  std::uint64_t max_bytes = 0;
  bool append = false;  // to the capture that PATH is; else what PATH is gets lost
};

// Each record is handed to the system in one write and is in the file when Write() returns: a crash
// of the process loses nothing. Its functions may be called from several threads at once; a file
// must have one writer at a time.
class CaptureWriter {
 public:
  // Larger messages are not recorded: the capture's datagrams end there.
  static constexpr std::size_t kMaxMessageBytes = 65435;

  CaptureWriter();
  ~CaptureWriter();  // as Close()
  CaptureWriter(const CaptureWriter&) = delete;
  CaptureWriter& operator=(const CaptureWriter&) = delete;

  // Opens the file, which is created with mode 0600, and closes the one open before. False when
  // that fails, or when options.append asks to continue a file that is no such capture; it is left
  // as it was. What a broken write left behind its last whole record is dropped.
  bool Open(const std::string& path, const CaptureOptions& options = {});

  // Adds a message: now, and with the operation that it stands for where its type does not say (a
  // number of the two sides' agreement, 0 for none). False when no file is open, the message is too
  // large or of another library, or the system refuses to write; the file then ends with the last
  // whole record, and the next call may succeed.
  //
  // About 1 us and one system call, a second one where a file is full.
  bool Write(Direction direction, const google::protobuf::MessageLite& message,
             std::uint8_t operation = 0);

  // The same for bytes that never became a message: as they are when subscriber data is shown, else
  // as MaskedBytes(type, bytes) gives them. type has 1 to 64 letters, digits, '_' and '.'; one that
  // the library does not have is recorded, masked without its bytes.
  bool Write(Direction direction, std::string_view type, std::string_view bytes,
             std::uint8_t operation = 0);

  void Close();

  // Why the last call of Open() or Write() failed, in words and with the path; empty when it did
  // not.
  std::string error() const;

 private:
  class File;
  std::unique_ptr<File> file_;
};

}  // namespace virtual_modem

#pragma GCC visibility pop
