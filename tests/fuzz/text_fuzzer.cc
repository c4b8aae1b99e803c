// Fuzz target over text.h: bytes, messages and texts must agree with one another, and nothing may
// get past the masks. Input: one byte that chooses the type, one for options, then the bytes.
#include <virtual_modem/text.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "check.h"
#include "support/message_types.h"
#include "support/schema.h"

namespace virtual_modem::testing {
namespace {

constexpr TextOptions kMasked{false, false, 0};
constexpr TextOptions kShown{true, false, 0};

// The field of that name, or of that number where it stands among the unknown ones.
const FieldSchema* FindField(const MessageSchema& schema, std::string_view name) {
  for (const FieldSchema& field : schema.fields) {
    if (field.name == name || std::to_string(field.number) == name) return &field;
  }
  return nullptr;
}

// What text that shows everything says of a message, line by line.
struct Shown {
  bool wrong_type = false;  // a declared field has a wire type not its own
  bool strings = false;     // strings and lists of numbers that hold anything
  bool hidden = false;      // subscriber data and unknown fields that do
};

Shown Look(const MessageSchema& outermost, std::string_view lines) {
  Shown shown;
  std::vector<const MessageSchema*> messages{&outermost};  // null in unknown groups
  for (; !lines.empty(); lines.remove_prefix(lines.find('\n') + 1)) {
    std::string_view line = lines.substr(0, lines.find('\n'));
    line.remove_prefix(std::min(line.find_first_not_of(' '), line.size()));
    FUZZ_CHECK(!line.empty(), "an empty line");
    if (line.front() == '#') break;
    if (line == "}") {
      messages.pop_back();
      continue;
    }
    const MessageSchema* schema = messages.back();
    const std::string_view name = line.substr(0, line.find_first_of(": "));
    const FieldSchema* field = schema == nullptr ? nullptr : FindField(*schema, name);
    const bool known = field != nullptr && field->name == name;
    const bool opens = line.back() == '{';
    if (opens) messages.push_back(known ? &SchemaOf(field->type) : nullptr);
    const std::string_view value = opens ? std::string_view() : line.substr(name.size() + 2);
    const bool digits = value.find_first_not_of("0123456789") == std::string_view::npos;
    // Numbers that an enumeration does not declare are no secret.
    if (!known && field != nullptr && field->kind == Kind::kEnum && !opens && digits) continue;
    shown.wrong_type = shown.wrong_type || (!known && field != nullptr);
    // Of an unknown field, XX may be a field 11 of 88.
    const bool masked = value.find_first_not_of("\"X0x") == std::string_view::npos ||
                        (value == "false" && known) || (line == "11: 88" && schema == nullptr);
    if (masked) continue;
    shown.hidden = shown.hidden || !known || field->subscriber_data;
    shown.strings = shown.strings ||
                    (known && (field->kind == Kind::kString ||
                               (field->label == Label::kRepeated && field->kind != Kind::kEnum)));
  }
  return shown;
}

// The byte at which the last line says that a message breaks, none when it says nothing.
std::optional<std::size_t> BreakIn(std::string_view lines) {
  constexpr std::string_view kMalformed = "# malformed at byte ";
  const std::size_t start = lines.rfind('\n', lines.empty() ? 0 : lines.size() - 2) + 1;
  if (lines.substr(start, kMalformed.size()) != kMalformed) return std::nullopt;
  return std::stoul(std::string(lines.substr(start + kMalformed.size())));
}

void Check(const MessageType& type, const std::string& bytes) {
  const auto message = type.create();
  const bool parsed = message->ParsePartialFromString(bytes);
  const MessageSchema& schema = SchemaOf(type.name);
  const std::string shown = ToText(type.name, bytes, kShown);
  const bool fits = parsed && message->IsInitialized() && !Look(schema, shown).wrong_type;

  const std::string masked = MaskedBytes(type.name, bytes);
  const Shown left = Look(schema, ToText(type.name, masked, kShown));
  FUZZ_CHECK(!left.hidden && (fits || !left.strings), "masks");
  FUZZ_CHECK(MaskedBytes(type.name, masked) == masked, "masked twice");
  const auto read = type.create();
  FUZZ_CHECK(read->ParsePartialFromString(masked) == parsed, "masked bytes parse as before");
  if (parsed) {
    FUZZ_CHECK(read->IsInitialized() == message->IsInitialized(), "what they lack");
  } else {
    FUZZ_CHECK(masked.size() == bytes.size(), "offsets in masked bytes");
  }

  const std::string text = ToText(type.name, bytes, kMasked);
  FUZZ_CHECK(ToText(type.name, masked, kMasked) == text, "text of masked bytes");
  for (const std::string_view each : {shown, text}) {
    FUZZ_CHECK(std::all_of(each.begin(), each.end(),
                           [](char c) { return (c >= ' ' && c <= '~') || c == '\n'; }),
               "a byte that does not print");
    const std::optional<std::size_t> breaks = BreakIn(each);
    FUZZ_CHECK(breaks.has_value() == !parsed && breaks.value_or(0) <= bytes.size(), "malformed");
  }

  // Where a parse failed, it may have left half an unknown field.
  const std::string written = message->SerializePartialAsString();
  FUZZ_CHECK(ToText(type.name, written, kShown) == ToText(*message, kShown), "bytes and message");
  FUZZ_CHECK(MissingFields(*message).empty() == message->IsInitialized(), "missing fields");
  if (!fits) return;
  FUZZ_CHECK(ToText(type.name, written, kMasked) == ToText(*message, kMasked), "masked text");
  const auto again = type.create();
  FUZZ_CHECK(again->ParsePartialFromString(MaskedBytes(*message)), "masked message");
  FUZZ_CHECK(again->SerializePartialAsString() == read->SerializePartialAsString(),
             "masks of bytes and message");
}

}  // namespace
}  // namespace virtual_modem::testing

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using virtual_modem::testing::AllMessageTypes;
  if (size < 2) return -1;
  const std::string bytes(reinterpret_cast<const char*>(data) + 2, size - 2);
  std::string input = bytes;
  // Repeated, lists outgrow the library's buffers.
  for (int copies = (data[1] & 0x1c) == 0x1c ? 8 : 1; copies > 1; --copies) input += bytes;
  virtual_modem::testing::Check(AllMessageTypes()[ChosenType(data, AllMessageTypes().size())],
                                input);
  return 0;
}
