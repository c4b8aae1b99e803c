// mask: a capture, or one message, with subscriber data masked.
#include <cstdio>
#include <string>

#include "inspect/commands/commands.h"
#include "inspect/error.h"
#include "inspect/examine/findings.h"
#include "inspect/examine/redact.h"
#include "inspect/read/capture.h"
#include "inspect/read/hex.h"
#include "inspect/show/file_to_write.h"
#include "inspect/show/output.h"
#include "text/walk.h"

namespace virtual_modem::inspect {
namespace {

Status MaskCapture(const Schema& schema, ByteStream& stream, const MaskOptions& options) {
  FileToWrite file(options.to);
  CaptureReader reader(schema, stream);
  const auto resolution = capture::Resolution::kMicroseconds;
  std::string out;
  capture::AppendFileHeader(resolution, out);
  Progress progress(stream);
  Record record;
  std::int64_t emptied = 0;
  while (reader.Next(record)) {
    progress.Show();
    if (record.name.empty()) {
      ++emptied;  // whatever it is, it names no type
      continue;
    }
    std::string masked;
    if (record.type == nullptr) {
      ++emptied;
    } else {
      text::Handler none;
      const text::Outcome outcome = text::WalkMessage(
          schema.tables(), schema.IndexOf(*record.type->type), record.bytes, none);
      const bool misfit = !outcome.acceptable() || outcome.wrong_type != 0;
      masked = Redact(schema, *record.type->type, record.bytes, misfit);
    }
    file.Write(out);
    out.clear();
    AppendRecord(record, masked, resolution, options.to, out);
  }
  file.Write(out);
  file.Keep();
  const std::string left_out = reader.PassedOver();
  if (!left_out.empty()) Note(stream.name() + ": left out " + left_out);
  if (emptied != 0) {
    Note(stream.name() + ": left out the bytes of frames whose type the schema does not have: " +
         std::to_string(emptied));
  }
  return kOk;
}

Status MaskMessage(Schema& schema, const MaskOptions& options) {
  const Descriptor& type = schema.GetMessage(options.type);
  bool binary = false;
  const std::string bytes = ReadBytes({options.from, options.encoding}, &binary);
  const Findings findings = ParseAndCheck(schema, bytes, *schema.NewMessage(type));
  if (findings.misfit() && !options.trust_type) {
    throw Error(DisplayName(options.from) + ": not masked, as it does not fit " + options.type +
                " (" + findings.Summary() +
                "); --trust-type masks it all the same, and what is another type's stays");
  }
  const std::string masked = Redact(schema, type, bytes);
  FileToWrite file(options.to);
  file.Write(binary ? masked : ToHex(masked) + "\n");  // what came as text goes as text
  file.Keep();
  return kOk;
}

}  // namespace

Status MaskCommand(Schema& schema, const MaskOptions& options) {
  schema.RequireSubscriberData();
  if (!options.type.empty()) return MaskMessage(schema, options);
  ByteStream stream(options.from);
  if (IsCapture(stream)) return MaskCapture(schema, stream, options);
  throw Error(stream.name() + ": not a capture; one message needs --type");
}

}  // namespace virtual_modem::inspect
