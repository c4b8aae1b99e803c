// encode: text or JSON in, bytes out, after the same checks as decode makes.
#include "inspect/encode.h"

#include <google/protobuf/io/coded_stream.h>
#include <google/protobuf/io/tokenizer.h>
#include <google/protobuf/io/zero_copy_stream_impl_lite.h>
#include <google/protobuf/stubs/strutil.h>
#include <google/protobuf/text_format.h>
#include <unistd.h>

#include <iostream>
#include <memory>
#include <string>

#include "inspect/commands.h"
#include "inspect/error.h"
#include "inspect/findings.h"
#include "inspect/hex.h"
#include "inspect/json.h"

namespace virtual_modem::inspect {
namespace {

using google::protobuf::TextFormat;
namespace io = google::protobuf::io;

// Keeps the first error: the ones after it are mostly its consequences.
class FirstError : public io::ErrorCollector {
 public:
  void AddError(int line, io::ColumnNumber column, const std::string& message) override {
    if (!text_.empty()) return;
    text_ = "line " + std::to_string(line + 1) + ", column " + std::to_string(column + 1) + ": " +
            message;
  }
  const std::string& text() const { return text_; }

 private:
  std::string text_;
};

std::string ToText(const std::string& bytes, Encoding encoding) {
  std::string text;
  switch (encoding) {
    case Encoding::kHex:
      return ToHex(bytes) + "\n";
    case Encoding::kBase64:
      google::protobuf::Base64Escape(bytes, &text);
      return text + "\n";
    default:
      return bytes;
  }
}

}  // namespace

std::string EncodeMessage(std::string_view source, bool json, Message& message) {
  if (json) return Json(*message.GetDescriptor()).Parse(source);
  FirstError errors;
  TextFormat::Parser parser;
  parser.RecordErrorsTo(&errors);
  parser.AllowPartialMessage(true);
  parser.SetRecursionLimit(100);
  if (!parser.ParseFromString(std::string(source), &message)) throw Error(errors.text());
  return message.SerializePartialAsString();
}

Status EncodeCommand(Schema& schema, const EncodeOptions& options) {
  const std::unique_ptr<Message> message = schema.NewMessage(schema.GetMessage(options.type));
  const std::string name = DisplayName(options.file);
  std::string bytes;
  try {
    bytes = EncodeMessage(ReadAll(options.file), options.json, *message);
  } catch (const Error& error) {
    throw Error(name + ": " + error.what());
  }

  const Findings findings = ParseAndCheck(bytes, *message);
  std::cerr << findings.Lines();
  if (!findings.empty() && !options.partial) {
    throw Error(name + ": not a valid " + options.type + " (" + findings.Summary() +
                "); --partial writes it all the same");
  }

  if (options.delimited) {
    std::string length;
    io::StringOutputStream stream(&length);
    io::CodedOutputStream(&stream).WriteVarint32(static_cast<std::uint32_t>(bytes.size()));
    bytes.insert(0, length);
  }
  Encoding to = options.to;
  if (to == Encoding::kAuto) {
    to = isatty(STDOUT_FILENO) != 0 ? Encoding::kHex : Encoding::kBinary;
  }
  std::cout << ToText(bytes, to);
  return kOk;
}

}  // namespace virtual_modem::inspect
