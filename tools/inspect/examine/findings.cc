#include "inspect/examine/findings.h"

#include <google/protobuf/descriptor.h>

#include <algorithm>

namespace virtual_modem::inspect {
namespace {

using google::protobuf::FieldDescriptor;
using google::protobuf::Reflection;

constexpr std::size_t kMaxTexts = 100;

const char* WireTypeName(text::WireType wire_type) {
  constexpr std::array<const char*, 6> kNames{"varint", "64-bit", "length-delimited",
                                              "group",  "none",   "32-bit"};
  return kNames.at(wire_type);
}

// Turns what the walk comes by into findings.
class Reporter : public text::Handler {
 public:
  Reporter(const Schema& schema, std::string_view bytes, const Descriptor& type, Findings& findings)
      : schema_(schema), bytes_(bytes), type_(type), findings_(findings) {}

  void Unknown(const text::Level& level, const text::Field* row, std::uint32_t number,
               text::WireType wire_type, std::string_view whole, std::string_view value) {
    const auto offset = std::to_string(whole.data() - bytes_.data());
    if (row == nullptr) {
      if (findings_.full()) return findings_.Add(Findings::kUnknown, "");
      const std::string path = text::PathTo(schema_.tables(), level);
      findings_.Add(Findings::kUnknown, path + (path.empty() ? "" : ": ") + "unknown field " +
                                            std::to_string(number) + " at byte " + offset + ", " +
                                            WireTypeName(wire_type) + ", " +
                                            std::to_string(whole.size()) + " bytes with its tag");
      return;
    }
    const Descriptor& type =
        level.field == nullptr ? type_ : *schema_.messages()[level.field->below];
    const FieldDescriptor& field = *type.FindFieldByNumber(static_cast<int>(number));
    const bool undeclared = row->kind == text::FieldKind::kEnum && wire_type == text::kVarint;
    const Findings::Kind kind = undeclared ? Findings::kUndeclared : Findings::kWireType;
    if (findings_.full()) return findings_.Add(kind, "");
    const std::string what =
        undeclared ? std::to_string(NumberIn(value)) + " is not a " + field.enum_type()->name()
                   : std::string("declared as ") + field.type_name() + ", came as " +
                         WireTypeName(wire_type);
    findings_.Add(kind, text::PathTo(schema_.tables(), level, *row) + ": " + what +
                            "; kept as unknown field " + std::to_string(number) + " (byte " +
                            offset + ")");
  }

  void Malformed(const text::Level& level, const text::Outcome& outcome) {
    const std::string path = text::PathTo(schema_.tables(), level);
    ReportMalformed(outcome.offset, path.empty() ? "" : " in " + path, text::Explain(outcome));
  }

  void ReportMalformed(std::size_t offset, const std::string& where, const std::string& why) {
    findings_.Add(Findings::kMalformed,
                  "malformed at byte " + std::to_string(offset) + where + ": " + why);
  }

  // Names the required fields that are absent in the message and below.
  void ReportMissing(const Message& message, const std::string& path) {
    const Reflection& reflection = *message.GetReflection();
    for (int i = 0; i < message.GetDescriptor()->field_count(); ++i) {
      const FieldDescriptor* field = message.GetDescriptor()->field(i);
      const bool is_message = field->message_type() != nullptr;
      if (!field->is_required() && !is_message) continue;
      if (field->is_required() && !reflection.HasField(message, field)) {
        findings_.Add(Findings::kMissing,
                      findings_.full() ? "" : "missing required " + path + field->name());
      } else if (field->is_repeated()) {
        for (int n = 0; n < reflection.FieldSize(message, field); ++n) {
          ReportMissing(reflection.GetRepeatedMessage(message, field, n),
                        path + field->name() + "[" + std::to_string(n) + "].");
        }
      } else if (is_message && reflection.HasField(message, field)) {
        ReportMissing(reflection.GetMessage(message, field), path + field->name() + ".");
      }
    }
  }

 private:
  const Schema& schema_;
  const std::string_view bytes_;
  const Descriptor& type_;
  Findings& findings_;
};

}  // namespace

void Findings::Add(Kind kind, const std::string& text) {
  ++counts_.at(kind);
  if (!text.empty() && (!full() || kind == kMalformed)) texts_.push_back(text);
}

bool Findings::full() const { return texts_.size() >= kMaxTexts; }

bool Findings::empty() const {
  return std::all_of(counts_.begin(), counts_.end(), [](std::size_t n) { return n == 0; });
}

std::string Findings::Lines() const {
  std::string lines;
  for (const std::string& text : texts_) lines += "# " + text + "\n";
  if (full()) lines += "# only the first 100 findings are shown\n";
  return lines;
}

std::string Findings::Summary() const {
  static constexpr std::array<const char*, kKinds> kNames{
      "malformed",        "required fields missing", "undeclared values",
      "wrong wire types", "unknown fields",          "texts not UTF-8",
  };
  std::string summary;
  for (std::size_t kind = 0; kind < kKinds; ++kind) {
    if (counts_.at(kind) == 0) continue;
    if (!summary.empty()) summary += ", ";
    summary += kNames.at(kind);
    if (kind != kMalformed) summary += ": " + std::to_string(counts_.at(kind));
  }
  return summary;
}

bool IsPlain(const text::Outcome& outcome) {
  return outcome.canonical && outcome.acceptable() && outcome.unknown == 0 &&
         outcome.undeclared == 0 && outcome.wrong_type == 0;
}

Findings ParseAndCheck(const Schema& schema, std::string_view bytes, Message& message) {
  const bool parsed = message.ParsePartialFromArray(bytes.data(), static_cast<int>(bytes.size()));
  Findings findings;
  Reporter reporter(schema, bytes, *message.GetDescriptor(), findings);
  const text::Outcome outcome =
      text::WalkMessage(schema.tables(), schema.IndexOf(*message.GetDescriptor()), bytes, reporter);
  // The walk follows the runtime's rules; should they ever differ, the runtime decides.
  if (!outcome.malformed() && !parsed) {
    reporter.ReportMalformed(bytes.size(), "", "the runtime refuses these bytes");
  }
  if (!message.IsInitialized()) reporter.ReportMissing(message, "");
  return findings;
}

}  // namespace virtual_modem::inspect
