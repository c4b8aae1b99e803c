// Fuzz target over the inspector's commands, and over what it finds in a message: the walk over the
// bytes must agree with the runtime's parser on what is malformed, missing and unknown, and with
// its printer; what is printed must read back. Input: one byte that chooses the message type, one
// for command and options, then the file, which is taken for a message too; for diff two files of
// equal size. log, mask and diff without a type read captures and logs.
#include <google/protobuf/stubs/logging.h>
#include <google/protobuf/text_format.h>
#include <google/protobuf/unknown_field_set.h>

#include <cstddef>
#include <cstdint>
#include <iostream>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "check.h"
#include "file.h"
#include "inspect/commands/commands.h"
#include "inspect/error.h"
#include "inspect/examine/findings.h"
#include "inspect/schema/schema.h"
#include "inspect/show/json.h"
#include "text/print.h"
#include "text/walk.h"

namespace virtual_modem::inspect {
namespace {

Status Run(Schema& schema, const std::string& type, std::uint8_t choice, std::string_view bytes) {
  static const File file;
  static const File other;
  const auto from = static_cast<Encoding>(choice >> 2 & 3);
  const bool first = (choice & 0x10) != 0;
  const bool second = (choice & 0x20) != 0;
  const bool third = (choice & 0x40) != 0;
  const std::size_t half = bytes.size() / 2;
  Options options;
  options.type = type;
  options.source.from = from;
  options.to = from;
  options.json = first;
  options.mask = second;
  options.partial = second;
  options.delimited = third;
  options.all = first;
  switch (choice & 0x83) {
    case 0:
      options.source.file = file.Holding(bytes);
      return DecodeCommand(schema, options);
    case 1:
      options.source.file = file.Holding(bytes);
      return EncodeCommand(schema, options);
    case 2:
      options.source.file = file.Holding(bytes);
      return IdentifyCommand(schema, options);
    case 3:
      options.words = {type, file.Holding(bytes.substr(0, half)),
                       other.Holding(bytes.substr(half))};
      options.trust_type = third;
      return DiffCommand(schema, options);
    case 0x80:
      options.words = {file.Holding(bytes)};
      options.incomplete = (choice & 4) != 0;
      options.mask = (choice & 8) != 0;
      options.pairs = first;
      options.count = second;
      options.json = third;
      options.diagram = second && third;
      options.grep = third ? "calls.number~1" : "";
      return LogCommand(schema, options);
    case 0x81:
      options.words = {file.Holding(bytes), "/dev/null"};
      options.type = third ? type : "";
      options.trust_type = first;
      return MaskCommand(schema, options);
    case 0x82:
      options.words = {file.Holding(bytes), file.Holding(bytes)};
      options.source.from = Encoding::kAuto;
      options.trust_type = first;
      return DiffCommand(schema, options);
    default: {
      constexpr Encoding kOthers[] = {Encoding::kString, Encoding::kArray, Encoding::kLog,
                                      Encoding::kAuto};
      options.source = {file.Holding(bytes), kOthers[choice >> 2 & 3]};
      return DecodeCommand(schema, options);
    }
  }
}

std::size_t CountUnknown(const Message& message) {
  const auto& reflection = *message.GetReflection();
  auto count = static_cast<std::size_t>(reflection.GetUnknownFields(message).field_count());
  std::vector<const FieldDescriptor*> fields;
  reflection.ListFields(message, &fields);
  for (const FieldDescriptor* field : fields) {
    if (field->message_type() == nullptr) continue;
    if (!field->is_repeated()) {
      count += CountUnknown(reflection.GetMessage(message, field));
      continue;
    }
    for (int i = 0; i < reflection.FieldSize(message, field); ++i) {
      count += CountUnknown(reflection.GetRepeatedMessage(message, field, i));
    }
  }
  return count;
}

std::string Print(const Schema& schema, unsigned type, std::string_view bytes,
                  text::Outcome& outcome) {
  static std::string text(std::size_t{1} << 20U, '\0');
  text::Sink sink(text.data(), text.size());
  outcome = text::Print(schema.tables(), type, bytes, text::Show::kAll, false, sink);
  return std::string(sink.text());
}

void CheckMessage(Schema& schema, unsigned type, std::string_view bytes) {
  const Descriptor& descriptor = *schema.types()[type].type;
  const std::unique_ptr<Message> owner = schema.NewMessage(descriptor);
  Message& message = *owner;
  Findings findings = ParseAndCheck(schema, bytes, message);
  const std::unique_ptr<Message> parsed(message.New());
  const bool malformed =
      !parsed->ParsePartialFromArray(bytes.data(), static_cast<int>(bytes.size()));
  FUZZ_CHECK(findings.malformed() == malformed, "malformed or not");
  FUZZ_CHECK(findings.Lines().find("the runtime refuses") == std::string::npos, "why it is");
  FUZZ_CHECK((findings.missing == 0) == message.IsInitialized(), "missing");
  std::string text;
  text::Outcome outcome;
  if (!malformed) {
    const std::size_t unknown = findings.unknown + findings.wrong_type + findings.undeclared;
    FUZZ_CHECK(unknown == CountUnknown(message), "unknown fields");
    google::protobuf::TextFormat::PrintToString(message, &text);
    const std::string ours = Print(schema, type, bytes, outcome);
    // Of an undeclared number over 32 bits, messages made at run time keep the lower half only.
    const bool same = outcome.canonical && outcome.undeclared == 0;
    FUZZ_CHECK(!same || ours == text, "text of bytes in order");
    FUZZ_CHECK(Print(schema, type, message.SerializePartialAsString(), outcome) == text, "text");
  }

  // What is printed can be read again, but for unknown fields, which have no place in it.
  message.DiscardUnknownFields();
  const std::string known = message.SerializePartialAsString();
  google::protobuf::TextFormat::PrintToString(message, &text);
  FUZZ_CHECK(EncodeMessage(text, false, *parsed) == known, "text and back");
  std::string json;
  AppendJson(schema, type, known, false, json, findings);
  if (findings.not_utf8 == 0) {
    FUZZ_CHECK(ParseJson(json, descriptor) == known, "JSON and back");
  }
}

}  // namespace
}  // namespace virtual_modem::inspect

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace virtual_modem::inspect;  // NOLINT: one function
  static Schema schema(DESCRIPTOR_SET);
  static const bool quiet = [] {
    std::cout.rdbuf(nullptr);
    std::cerr.rdbuf(nullptr);
    google::protobuf::SetLogHandler(nullptr);
    return true;
  }();
  if (size < 2 || !quiet) return -1;
  const TypeInfo& type = schema.types()[ChosenType(data, schema.types().size())];
  const std::string_view bytes(reinterpret_cast<const char*>(data) + 2, size - 2);
  CheckMessage(schema, type.index, bytes);
  try {
    Run(schema, type.type->full_name(), data[1], bytes);
  } catch (const Error&) {
    // Bad input, as told to the user.
  }
  return 0;
}
