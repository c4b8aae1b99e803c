// decode: bytes in, text or JSON out, and beneath it what the message does not say by itself.
#include <memory>
#include <string>

#include "inspect/commands/commands.h"
#include "inspect/error.h"
#include "inspect/examine/findings.h"
#include "inspect/show/output.h"
#include "inspect/show/printer.h"

namespace virtual_modem::inspect {
namespace {

// Findings stand beneath text as comments. Beside JSON, which has none, they go to standard error.
void PrintFindings(const Findings& findings, const Options& options, bool shown, Output& out) {
  if (findings.empty()) return;
  // Findings quote numbers, which may be subscriber data of the type that the bytes are of.
  const std::string lines =
      shown ? findings.Lines()
            : "# not shown, as it does not fit the type: " + findings.Summary() + "\n";
  if (options.json) {
    out.AppendError(lines);
  } else {
    out.Append(lines);
  }
}

Status DecodeStream(Printer& printer, unsigned type, ByteStream& stream, const Options& options,
                    Output& out) {
  DelimitedReader reader(stream);
  stream.BeforeWait([&out] { out.Flush(); });
  std::int64_t count = 0;
  std::int64_t refused = 0;
  std::int64_t hidden = 0;
  const auto heading = [&](auto append) {
    append("# message ");
    append(count);
    append(" at byte ");
    append(reader.offset());
    append(", ");
    append(static_cast<std::int64_t>(reader.size()));
    append(" bytes\n");
  };
  while (reader.Next()) {
    if (!options.json) heading([&](auto part) { out.Append(part); });
    const Findings findings = printer.Print(type, reader.bytes());
    if (options.json && printer.shown()) out.Append("\n");
    if (!findings.empty()) {
      if (options.json) heading([&](auto part) { out.AppendError(part); });
      PrintFindings(findings, options, printer.shown(), out);
    }
    if (!findings.acceptable()) ++refused;
    if (!printer.shown()) ++hidden;
    if (reader.cut()) {
      throw Error(stream.name() + ": the stream ends within message " + std::to_string(count));
    }
    ++count;
  }
  if (refused == 0 && hidden == 0) return kOk;
  throw Error(
      stream.name() + ": " + std::to_string(hidden != 0 ? hidden : refused) + " of " +
      std::to_string(count) + " messages are " +
      (hidden != 0 ? "not shown, as they do not fit " + options.type : "malformed or incomplete"));
}

}  // namespace

Status DecodeCommand(Schema& schema, const Options& options) {
  const unsigned type = schema.GetType(options.type).index;
  Output out;
  Printer printer(schema,
                  {options.json, options.mask, options.trust_type ? Misfit::kTrust : Misfit::kHide,
                   options.json && options.delimited},
                  out);
  const Source& source = options.source;
  const bool as_is = source.from == Encoding::kBinary || source.from == Encoding::kAuto;
  if (options.delimited && as_is && !source.hex) {
    ByteStream stream(source.file);
    if (source.from == Encoding::kAuto) RefuseCapture(stream);
    return DecodeStream(printer, type, stream, options, out);
  }
  const std::string bytes = ReadBytes(source);
  if (options.delimited) {
    ByteStream stream(bytes, DisplayName(source));
    return DecodeStream(printer, type, stream, options, out);
  }
  const Findings findings = printer.Print(type, bytes);
  if (options.json && printer.shown()) out.Append("\n");
  PrintFindings(findings, options, printer.shown(), out);
  if (findings.acceptable() && printer.shown()) return kOk;
  throw Error(DisplayName(source) + ": " +
              (printer.shown() ? "not a valid " : "not shown, as it does not fit ") + options.type +
              " (" + findings.Summary() + ")" +
              (printer.shown()
                   ? ""
                   : "; --trust-type masks it anyway, but data of another type may then show"));
}

}  // namespace virtual_modem::inspect
