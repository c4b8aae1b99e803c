// decode: bytes in, text or JSON out, and beneath it what the message does not say by itself.
#include <string>

#include "inspect/commands/commands.h"
#include "inspect/error.h"
#include "inspect/examine/findings.h"
#include "inspect/show/output.h"
#include "inspect/show/printer.h"

namespace virtual_modem::inspect {
namespace {

// Findings stand beneath text as comments. Beside JSON, which has none, they go to standard error.
void PrintFindings(const Findings& findings, Output& to) {
  if (findings.empty()) return;
  // Findings quote numbers, which may be subscriber data of the type that the bytes are of.
  to.Append(findings.hidden
                ? "# not shown, as it does not fit the type: " + findings.Summary() + "\n"
                : findings.Lines());
}

Status DecodeStream(Printer& printer, unsigned type, ByteStream& stream, const Options& options,
                    Output& out, Output& remarks) {
  DelimitedReader reader(stream);
  stream.BeforeWait([&] {
    out.Flush();
    remarks.Flush();
  });
  std::int64_t count = 0;
  std::int64_t refused = 0;
  std::int64_t hidden = 0;
  const auto print_heading = [&] {
    remarks.Append("# message ").Append(count).Append(" at byte ").Append(reader.offset());
    remarks.Append(", ").Append(static_cast<std::int64_t>(reader.size())).Append(" bytes\n");
  };
  while (reader.Next()) {
    if (!options.json) print_heading();
    const Findings findings = printer.Print(type, reader.bytes());
    if (options.json && !findings.hidden) out.Append("\n");
    if (options.json && !findings.empty()) print_heading();
    PrintFindings(findings, remarks);
    if (!findings.acceptable()) ++refused;
    if (findings.hidden) ++hidden;
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
  Output errors(std::cerr, &out);
  Output& remarks = options.json ? errors : out;
  Printer printer(schema,
                  {options.json, options.mask, options.trust_type ? Misfit::kTrust : Misfit::kHide,
                   options.json && options.delimited},
                  out);
  const Source& source = options.source;
  const bool as_is = source.from == Encoding::kBinary || source.from == Encoding::kAuto;
  if (options.delimited && as_is && !source.hex) {
    ByteStream stream(source.file);
    if (source.from == Encoding::kAuto) RefuseCapture(stream);
    return DecodeStream(printer, type, stream, options, out, remarks);
  }
  const std::string bytes = ReadBytes(source);
  if (options.delimited) {
    ByteStream stream(bytes, DisplayName(source));
    return DecodeStream(printer, type, stream, options, out, remarks);
  }
  const Findings findings = printer.Print(type, bytes);
  if (options.json && !findings.hidden) out.Append("\n");
  PrintFindings(findings, remarks);
  const std::string name = DisplayName(source);
  const std::string what = options.type + " (" + findings.Summary() + ")";
  if (findings.hidden) {
    throw Error(name + ": not shown, as it does not fit " + what +
                "; --trust-type masks it anyway, but data of another type may then show");
  }
  if (!findings.acceptable()) throw Error(name + ": not a valid " + what);
  return kOk;
}

}  // namespace virtual_modem::inspect
