// Captures of the messages' frames, read by libpcap. docs/captures.md describes the format.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "capture/file.h"
#include "inspect/read/traffic.h"

struct pcap;

namespace virtual_modem::inspect {

// The kind of a file by its first bytes, ordered by the resolution of its times.
enum class CaptureForm : std::uint8_t { kNoCapture, kMicroseconds, kNanoseconds };
CaptureForm FormOf(ByteStream& stream);

class CaptureReader : public Traffic {
 public:
  // Both must outlive the reader.
  CaptureReader(const Schema& schema, ByteStream& stream);
  ~CaptureReader() override;
  CaptureReader(const CaptureReader&) = delete;
  CaptureReader& operator=(const CaptureReader&) = delete;

  bool Next(Record& record) override;
  std::string PassedOver() const override;

 private:
  static ssize_t ReadCookie(void* cookie, char* to, std::size_t size);

  const Schema& schema_;
  ByteStream& stream_;
  std::string stream_error_;
  pcap* capture_ = nullptr;
  std::size_t link_header_ = 0;
  std::int64_t number_ = 0;
  std::int64_t foreign_ = 0;
};

// Appends a record to what goes into a capture; a record without a type keeps its name. Throws
// Error that names the file when the message is too large.
void AppendRecord(const Record& record, std::string_view bytes, capture::Resolution resolution,
                  const std::string& file, std::string& out);

}  // namespace virtual_modem::inspect
