// Fuzz target for what the inspector finds in a message: the walk over the bytes must agree with
// the runtime's parser on what is malformed, missing and unknown, and with its printer; what is
// printed must read back, and nothing may get past the masks. Inputs as those of
// inspector_fuzzer.cc, whose second byte means nothing here.
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
#include "inspect/commands/commands.h"
#include "inspect/examine/findings.h"
#include "inspect/schema/schema.h"
#include "inspect/show/json.h"
#include "text/mask.h"
#include "text/print.h"
#include "text/walk.h"

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

// Finds what masks should have hidden.
struct Unmasked : text::Handler {
  void Number(const text::Level&, const text::Field& field, std::uint64_t value) {
    found = found || (field.subscriber_data && value != 0);
  }
  void String(const text::Level&, const text::Field& field, std::string_view bytes) {
    found =
        found || (field.subscriber_data && bytes.find_first_not_of('X') != std::string_view::npos);
  }
  void Unknown(const text::Level&, const text::Field* field, std::uint32_t, text::WireType type,
               std::string_view, std::string_view value) {
    const bool undeclared = field != nullptr && field->kind == text::FieldKind::kEnum;
    if (type == text::kStartGroup || (type == text::kVarint && undeclared)) return;
    found = found || value.find_first_not_of(type == text::kLengthDelimited
                                                 ? std::string_view("X")
                                                 : kZero) != std::string_view::npos;
  }
  static constexpr std::string_view kZero{"\0\x80", 2};
  bool found = false;
};

std::string Print(unsigned type, std::string_view bytes, text::Outcome& outcome) {
  std::string text(std::size_t{1} << 20U, '\0');
  text::Sink sink(text.data(), text.size());
  outcome = text::Print(TheSchema().tables(), type, bytes, text::Show::kAll, false, sink);
  return std::string(sink.text());
}

void CheckMessage(std::string_view bytes, Message& message) {
  const Schema& schema = TheSchema();
  const unsigned type = schema.IndexOf(*message.GetDescriptor());
  Findings findings = ParseAndCheck(schema, bytes, message);
  const std::unique_ptr<Message> parsed(message.New());
  const bool malformed =
      !parsed->ParsePartialFromArray(bytes.data(), static_cast<int>(bytes.size()));
  FUZZ_CHECK((findings.count(Findings::kMalformed) != 0) == malformed, "malformed or not");
  FUZZ_CHECK(findings.Lines().find("the runtime refuses") == std::string::npos, "why it is");
  FUZZ_CHECK((findings.count(Findings::kMissing) == 0) == message.IsInitialized(), "missing");
  std::string text;
  text::Outcome outcome;
  if (!malformed) {
    const std::size_t unknown = findings.count(Findings::kUnknown) +
                                findings.count(Findings::kWireType) +
                                findings.count(Findings::kUndeclared);
    FUZZ_CHECK(unknown == CountUnknown(message), "unknown fields");
    google::protobuf::TextFormat::PrintToString(message, &text);
    const std::string ours = Print(type, bytes, outcome);
    // Of an undeclared number over 32 bits, messages made at run time keep the lower half only.
    const bool same = outcome.canonical && outcome.undeclared == 0;
    FUZZ_CHECK(!same || ours == text, "text of bytes in order");
    FUZZ_CHECK(Print(type, message.SerializePartialAsString(), outcome) == text, "text");
  }

  Unmasked unmasked;
  std::string masked;
  text::AppendMasked(schema.tables(), type, bytes, text::Show::kMasked, masked);
  text::WalkMessage(schema.tables(), type, masked, unmasked);
  FUZZ_CHECK(!unmasked.found, "masks");

  // What is printed can be read again, but for unknown fields, which have no place in it.
  message.DiscardUnknownFields();
  const std::string known = message.SerializePartialAsString();
  google::protobuf::TextFormat::PrintToString(message, &text);
  FUZZ_CHECK(EncodeMessage(text, false, *parsed) == known, "text and back");
  std::string json;
  AppendJson(schema, type, known, false, json, findings);
  if (findings.count(Findings::kText) == 0) {
    FUZZ_CHECK(JsonReader(*message.GetDescriptor()).Parse(json) == known, "JSON and back");
  }
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
