// decode: bytes in, text or JSON out, and beneath it what the message does not say by itself.
#include <fcntl.h>
#include <google/protobuf/io/zero_copy_stream_impl.h>
#include <google/protobuf/io/zero_copy_stream_impl_lite.h>
#include <google/protobuf/text_format.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <iostream>
#include <memory>
#include <optional>
#include <string>

#include "inspect/commands.h"
#include "inspect/error.h"
#include "inspect/findings.h"
#include "inspect/json.h"
#include "inspect/redact.h"

namespace virtual_modem::inspect {
namespace {

using google::protobuf::TextFormat;
namespace io = google::protobuf::io;

// Prints message after message of one type.
class Decoder {
 public:
  Decoder(Schema& schema, const DecodeOptions& options)
      : schema_(schema),
        options_(options),
        message_(schema.NewMessage(schema.GetMessage(options.type))) {
    if (options.redact) schema.RequireSubscriberData();
    if (options.json) json_.emplace(*message_->GetDescriptor());
  }

  // Findings stand beneath text as comments. Beside JSON, which has none, they go to standard
  // error, behind the heading.
  Findings Print(std::string_view bytes, const std::string& heading) {
    Findings findings = ParseAndCheck(bytes, *message_);
    if (options_.redact) Redact(schema_, *message_);
    if (json_) {
      std::cout << json_->Print(*message_, !options_.delimited, findings);
      if (!findings.empty()) std::cerr << heading << findings.Lines();
    } else {
      text_ = heading;
      io::StringOutputStream out(&text_);
      printer_.Print(*message_, &out);
      std::cout << text_ << findings.Lines();
    }
    return findings;
  }

 private:
  const Schema& schema_;
  const DecodeOptions& options_;
  std::unique_ptr<Message> message_;
  std::optional<Json> json_;
  TextFormat::Printer printer_;
  std::string text_;
};

// How far a long job is, on standard error if that is a terminal, from its second second on.
class Progress {
 public:
  explicit Progress(std::int64_t total) : total_(total) {}
  Progress(const Progress&) = delete;
  Progress& operator=(const Progress&) = delete;
  ~Progress() {
    if (shown_) std::cerr << "\r\033[K";
  }

  void At(std::int64_t done) {
    if (!terminal_ || done < next_look_) return;
    next_look_ = done + (1 << 20);
    const auto now = std::chrono::steady_clock::now();
    if (now < next_) return;
    next_ = now + std::chrono::milliseconds(200);
    std::cerr << '\r' << done / 1'000'000 << " MB";
    if (total_ > 0) std::cerr << ", " << done * 100 / total_ << " %";
    std::cerr << "\033[K" << std::flush;
    shown_ = true;
  }

 private:
  const std::int64_t total_;  // 0: not known
  const bool terminal_ = isatty(STDERR_FILENO) != 0 && isatty(STDOUT_FILENO) == 0;
  std::chrono::steady_clock::time_point next_ =
      std::chrono::steady_clock::now() + std::chrono::seconds(1);
  std::int64_t next_look_ = 0;
  bool shown_ = false;
};

Status DecodeStream(Decoder& decoder, io::ZeroCopyInputStream& stream, std::int64_t size,
                    const std::string& name) {
  DelimitedReader reader(stream, name);
  Progress progress(size);
  std::int64_t count = 0;
  std::int64_t refused = 0;
  while (reader.Next()) {
    const std::string heading = "# message " + std::to_string(count) + " at byte " +
                                std::to_string(reader.offset()) + ", " +
                                std::to_string(reader.size()) + " bytes\n";
    const Findings findings = decoder.Print(reader.bytes(), heading);
    if (!findings.acceptable()) ++refused;
    if (reader.cut()) {
      throw Error(name + ": the stream ends within message " + std::to_string(count));
    }
    ++count;
    progress.At(stream.ByteCount());
  }
  if (refused == 0) return kOk;
  throw Error(name + ": " + std::to_string(refused) + " of " + std::to_string(count) +
              " messages are malformed or incomplete");
}

Status DecodeBinaryStream(Decoder& decoder, const std::string& path) {
  const int file = path == "-" ? STDIN_FILENO : open(path.c_str(), O_RDONLY | O_CLOEXEC);
  if (file < 0) throw Error(path + ": " + std::strerror(errno));
  io::FileInputStream stream(file, 1 << 20);
  stream.SetCloseOnDelete(file != STDIN_FILENO);
  struct stat info {};
  const bool known = fstat(file, &info) == 0 && S_ISREG(info.st_mode);
  const Status status = DecodeStream(decoder, stream, known ? info.st_size : 0, DisplayName(path));
  if (stream.GetErrno() != 0) throw Error(path + ": " + std::strerror(stream.GetErrno()));
  return status;
}

}  // namespace

Status DecodeCommand(Schema& schema, const DecodeOptions& options) {
  Decoder decoder(schema, options);
  const bool as_is = options.from == Encoding::kBinary || options.from == Encoding::kAuto;
  if (options.delimited && as_is) return DecodeBinaryStream(decoder, options.file);

  const std::string bytes = ReadBytes(options.file, options.from);
  if (options.delimited) {
    io::ArrayInputStream stream(bytes.data(), static_cast<int>(bytes.size()));
    return DecodeStream(decoder, stream, 0, DisplayName(options.file));
  }
  const Findings findings = decoder.Print(bytes, "");
  if (findings.acceptable()) return kOk;
  throw Error(DisplayName(options.file) + ": not a valid " + options.type + " (" +
              findings.Summary() + ")");
}

}  // namespace virtual_modem::inspect
