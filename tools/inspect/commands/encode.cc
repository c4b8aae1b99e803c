// encode: text or JSON in, bytes out, after the same checks as decode makes.

#include <google/protobuf/stubs/strutil.h>
#include <google/protobuf/text_format.h>
#include <unistd.h>

#include <chrono>
#include <iostream>
#include <string>

#include "inspect/commands/commands.h"
#include "inspect/error.h"
#include "inspect/examine/findings.h"
#include "inspect/read/hex.h"
#include "inspect/read/recording.h"
#include "inspect/read/text_form.h"
#include "inspect/show/file_to_write.h"
#include "inspect/show/json.h"

namespace virtual_modem::inspect {
namespace {

using google::protobuf::TextFormat;

// The values of an enumeration if they are few enough to choose from, else the type.
std::string Choice(const FieldDescriptor& field) {
  constexpr int kMaxValues = 8;
  const auto* type = field.enum_type();
  if (type == nullptr || type->value_count() > kMaxValues) return TypeOf(field);
  std::string values;
  for (int i = 0; i < type->value_count(); ++i) {
    values += (i == 0 ? "" : ", ") + type->value(i)->name();
  }
  return values;
}

// The required fields of the type and below with values that can be encoded, the others as
// comments; beside each its type or choice.
void AppendSkeleton(const Message& message, const std::string& indent, std::string& text) {
  const Descriptor& type = *message.GetDescriptor();
  for (int i = 0; i < type.field_count(); ++i) {
    const FieldDescriptor& field = *type.field(i);
    text.append(indent).append(field.is_required() ? "" : "# ").append(field.name());
    if (!field.is_required()) {
      text.append(": ").append(LabelOf(field)).append(" ").append(Choice(field));
    } else if (field.message_type() != nullptr) {
      text.append(" {\n");
      AppendSkeleton(message.GetReflection()->GetMessage(message, &field), indent + "  ", text);
      text.append(indent).append("}");
    } else {
      std::string value;
      TextFormat::PrintFieldValueToString(message, &field, -1, &value);
      text.append(": ").append(value).append("  # ").append(Choice(field));
    }
    text.append("\n");
  }
}

// A capture of one message that was sent now, in the direction of its kind.
void WriteCapture(const TypeInfo& type, std::string_view bytes, const std::string& path) {
  const std::chrono::nanoseconds now = std::chrono::system_clock::now().time_since_epoch();
  Record record;
  record.time = now.count();
  record.direction = type.kind == "request" ? Direction::kToModem : Direction::kToTelephony;
  record.name = type.type->full_name();
  std::string capture;
  capture::AppendFileHeader(capture::Resolution::kMicroseconds, capture);
  AppendRecord(record, bytes, capture::Resolution::kMicroseconds, path, capture);
  FileToWrite file(path);
  file.Write(capture);
  file.Keep();
}

}  // namespace

std::string EncodeMessage(std::string_view source, bool json, Message& message) {
  if (json) return ParseJson(source, *message.GetDescriptor());
  const std::string problem = ParseText(std::string(source), false, message);
  if (!problem.empty()) throw Error(problem);
  return message.SerializePartialAsString();
}

Status EncodeCommand(Schema& schema, const Options& options) {
  const TypeInfo& type = schema.GetType(options.type);
  if (options.skeleton) {
    std::string text;
    AppendSkeleton(schema.Scratch(type.index), "", text);
    std::cout << text;
    return kOk;
  }
  Message& message = schema.Scratch(type.index);
  const std::string name = DisplayName(options.source);
  ByteStream stream(options.source.file);
  const std::string source = ReadAll(stream);
  std::string bytes;
  try {
    bytes = EncodeMessage(source, options.json, message);
  } catch (const Error& error) {
    throw Error(name + ": " + error.what());
  }

  const Findings findings = ParseAndCheck(schema, bytes, message);
  std::cerr << findings.Lines();
  if (!findings.empty() && !options.partial) {
    throw Error(name + ": not a valid " + options.type + " (" + findings.Summary() +
                "); --partial writes it anyway");
  }

  if (bytes.size() > kMaxMessageBytes) throw Error(name + ": the message is over 16 MiB");
  if (!options.capture.empty()) {
    WriteCapture(type, bytes, options.capture);
    return kOk;
  }
  if (options.delimited) bytes.insert(0, Varint(bytes.size()));
  Encoding to = options.to;
  if (to == Encoding::kAuto) {
    to = isatty(STDOUT_FILENO) != 0 ? Encoding::kHex : Encoding::kBinary;
  }
  if (to == Encoding::kHex) bytes = ToHex(bytes);
  if (to == Encoding::kBase64) google::protobuf::Base64Escape(std::string(bytes), &bytes);
  std::cout << bytes << (to == Encoding::kBinary ? "" : "\n");
  return kOk;
}

}  // namespace virtual_modem::inspect
