// Fuzz target for what the inspector finds in a message: its own walk over the bytes must agree
// with the runtime's parser on what is malformed, missing and unknown, and what it prints must read
// back. Inputs as those of inspector_fuzzer.cc, whose second byte means nothing here.
#include <google/protobuf/stubs/logging.h>
#include <google/protobuf/text_format.h>
#include <google/protobuf/unknown_field_set.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "check.h"
#include "inspect/encode.h"
#include "inspect/findings.h"
#include "inspect/json.h"
#include "inspect/redact.h"
#include "inspect/schema.h"

namespace virtual_modem::inspect {
namespace {

Schema& TheSchema() {
  static Schema schema(DESCRIPTOR_SET);
  return schema;
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

void CheckMessage(std::string_view bytes, Message& message) {
  Findings findings = ParseAndCheck(bytes, message);
  const std::unique_ptr<Message> parsed(message.New());
  const bool malformed =
      !parsed->ParsePartialFromArray(bytes.data(), static_cast<int>(bytes.size()));
  FUZZ_CHECK((findings.count(Findings::kMalformed) != 0) == malformed, "malformed or not");
  FUZZ_CHECK(findings.Lines().find("the runtime refuses") == std::string::npos, "why it is");
  FUZZ_CHECK((findings.count(Findings::kMissing) == 0) == message.IsInitialized(), "missing");
  if (!malformed) {
    const std::size_t unknown = findings.count(Findings::kUnknown) +
                                findings.count(Findings::kWireType) +
                                findings.count(Findings::kUndeclared);
    FUZZ_CHECK(unknown == CountUnknown(message), "unknown fields");
  }

  // What is printed can be read again, but for unknown fields, which have no place in it.
  message.DiscardUnknownFields();
  const std::string known = message.SerializePartialAsString();
  std::string text;
  google::protobuf::TextFormat::PrintToString(message, &text);
  FUZZ_CHECK(EncodeMessage(text, false, *parsed) == known, "text and back");
  const Json json(*message.GetDescriptor());
  const std::string printed = json.Print(message, false, findings);
  if (findings.count(Findings::kText) == 0) {
    FUZZ_CHECK(json.Parse(printed) == known, "JSON and back");
  }
  Redact(TheSchema(), message);
}

}  // namespace
}  // namespace virtual_modem::inspect

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  namespace inspect = virtual_modem::inspect;
  google::protobuf::SetLogHandler(nullptr);
  if (size < 2) return -1;
  const auto& types = inspect::TheSchema().messages();
  const auto message = inspect::TheSchema().NewMessage(*types[data[0] % types.size()]);
  inspect::CheckMessage({reinterpret_cast<const char*>(data) + 2, size - 2}, *message);
  return 0;
}
