// decode: bytes in, text or JSON out, and beneath it what the message does not say by itself.
#include <google/protobuf/io/coded_stream.h>
#include <google/protobuf/io/zero_copy_stream_impl_lite.h>

#include <string>

#include "inspect/commands/commands.h"
#include "inspect/error.h"
#include "inspect/examine/findings.h"
#include "inspect/show/output.h"
#include "inspect/show/printer.h"

namespace virtual_modem::inspect {
namespace {

using google::protobuf::io::ZeroCopyInputStream;

// Findings stand beneath text as comments. Beside JSON, which has none, they go to standard error.
void PrintFindings(const Findings& findings, Output& to) {
  if (findings.empty()) return;
  // Findings quote numbers, which may be subscriber data of the type that the bytes are of.
  to.Append(findings.hidden
                ? "# not shown, as it does not fit the type: " + findings.Summary() + "\n"
                : findings.Lines());
}

// A message of a stream in which each stands after its length, as a varint.
struct Delimited {
  std::int64_t offset = 0;  // after the length
  std::uint64_t size = 0;
  std::string bytes;  // fewer when the stream ends within the message
};

// Reads the next one; false at the end of the stream. Throws Error when there is no sensible
// length.
bool ReadDelimited(ZeroCopyInputStream& stream, const std::string& name, Delimited& message) {
  const std::int64_t start = stream.ByteCount();
  google::protobuf::io::CodedInputStream in(&stream);
  const void* ahead = nullptr;
  int count = 0;
  if (!in.GetDirectBufferPointer(&ahead, &count)) return false;
  if (!in.ReadVarint64(&message.size) || message.size > kMaxMessageBytes) {
    throw Error(name + ": no length of a message at byte " + std::to_string(start) +
                " (is this a stream of delimited messages?)");
  }
  message.offset = start + in.CurrentPosition();
  in.ReadString(&message.bytes, static_cast<int>(message.size));
  return true;
}

Status DecodeStream(Printer& printer, unsigned type, ZeroCopyInputStream& stream,
                    const Options& options, Output& out, Output& remarks) {
  const std::string name = DisplayName(options.source);
  Delimited message;
  std::int64_t count = 0;
  std::int64_t refused = 0;
  std::int64_t hidden = 0;
  const auto print_heading = [&] {
    remarks.Append("# message ").Append(count).Append(" at byte ").Append(message.offset);
    remarks.Append(", ").Append(static_cast<std::int64_t>(message.size)).Append(" bytes\n");
  };
  while (ReadDelimited(stream, name, message)) {
    if (!options.json) print_heading();
    const Findings findings = printer.Print(type, message.bytes);
    if (options.json && !findings.hidden) out.Append("\n");
    if (options.json && !findings.empty()) print_heading();
    PrintFindings(findings, remarks);
    if (!findings.acceptable()) ++refused;
    if (findings.hidden) ++hidden;
    if (message.bytes.size() < message.size) {
      throw Error(name + ": the stream ends within message " + std::to_string(count));
    }
    ++count;
  }
  if (refused == 0 && hidden == 0) return kOk;
  throw Error(
      name + ": " + std::to_string(hidden != 0 ? hidden : refused) + " of " +
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
    stream.BeforeWait([&] {
      out.Flush();
      remarks.Flush();
    });
    google::protobuf::io::CopyingInputStreamAdaptor blocks(&stream, 1 << 18);
    return DecodeStream(printer, type, blocks, options, out, remarks);
  }
  const std::string bytes = ReadBytes(source);
  if (options.delimited) {
    google::protobuf::io::ArrayInputStream stream(bytes.data(), static_cast<int>(bytes.size()));
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
