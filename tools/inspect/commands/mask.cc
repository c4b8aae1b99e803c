// mask: captures, or one message, with subscriber data masked.
#include "text/mask.h"

#include <string>

#include "inspect/commands/commands.h"
#include "inspect/error.h"
#include "inspect/examine/findings.h"
#include "inspect/read/hex.h"
#include "inspect/read/recording.h"
#include "inspect/show/file_to_write.h"

namespace virtual_modem::inspect {
namespace {

// The bytes of a frame masked; none of a type that the schema does not have.
std::string MaskedFrame(const Schema& schema, const Record& record) {
  std::string masked;
  if (record.type == nullptr) return masked;
  const auto mask = [&](text::Show show) {
    masked.clear();
    return text::AppendMasked(schema.tables(), record.type->index, record.bytes, show, masked);
  };
  if (mask(text::Show::kMasked).doubtful()) mask(text::Show::kShape);
  return masked;
}

Status MaskCaptures(Schema& schema, const Options& options) {
  const std::vector<std::string> from(options.words.begin(), options.words.end() - 1);
  const std::string& to = options.words.back();
  Recording recording(schema, from);
  const auto resolution = recording.Resolution();
  if (!resolution) {
    throw Error(DisplayName(from.front()) + ": not a capture; one message needs --type");
  }
  FileToWrite file(to);
  std::string out;
  capture::AppendFileHeader(*resolution, out);
  Record record;
  std::int64_t emptied = 0;
  while (recording.Next(record)) {
    if (record.type == nullptr) ++emptied;
    if (record.name.empty()) continue;  // whatever it is, it names no type
    file.Write(out);
    out.clear();
    AppendRecord(record, MaskedFrame(schema, record), *resolution, to, out);
  }
  file.Write(out);
  file.Keep();
  recording.NotePassedOver("left out");
  if (emptied != 0) {
    Note(recording.names() +
         ": left out the bytes of frames whose type the schema does not have: " +
         std::to_string(emptied));
  }
  return kOk;
}

Status MaskMessage(Schema& schema, const Options& options) {
  if (options.words.size() > 2) throw UsageError("--type takes one message");
  const Source source{options.words.front(), options.source.from};
  const unsigned type = schema.GetType(options.type).index;
  bool binary = false;
  const std::string bytes = ReadBytes(source, &binary);
  const Findings findings = ParseAndCheck(schema, bytes, schema.Scratch(type));
  if (findings.misfit() && !options.trust_type) {
    throw Error(DisplayName(source) + ": not masked, as it does not fit " + options.type + " (" +
                findings.Summary() +
                "); --trust-type masks it anyway, but data of another type may then stay");
  }
  std::string masked;
  text::AppendMasked(schema.tables(), type, bytes, text::Show::kMasked, masked);
  FileToWrite file(options.words.back());
  file.Write(binary ? masked : ToHex(masked) + "\n");  // what came as text goes as text
  file.Keep();
  return kOk;
}

}  // namespace

Status MaskCommand(Schema& schema, const Options& options) {
  if (options.words.size() < 2) throw UsageError("mask takes IN... OUT");
  schema.RequireSubscriberData();
  return options.type.empty() ? MaskCaptures(schema, options) : MaskMessage(schema, options);
}

}  // namespace virtual_modem::inspect
