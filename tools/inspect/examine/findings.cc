#include "inspect/examine/findings.h"

#include <google/protobuf/descriptor.h>

#include <array>
#include <utility>

namespace virtual_modem::inspect {
namespace {

constexpr std::size_t kMaxTexts = 100;

const char* WireTypeName(text::WireType wire_type) {
  constexpr std::array<const char*, 6> kNames{"varint", "64-bit", "length-delimited",
                                              "group",  "none",   "32-bit"};
  return kNames.at(wire_type);
}

// Puts what the walk comes by into words.
class Reporter : public text::Handler {
 public:
  Reporter(const Schema& schema, std::string_view bytes, unsigned type, Findings& findings)
      : schema_(schema), bytes_(bytes), type_(type), findings_(findings) {}

  void Undeclared(const text::Level& level, const text::Field& field, std::uint64_t value,
                  std::string_view whole) {
    if (findings_.full()) return;
    AddKept(level, field, whole,
            std::to_string(static_cast<std::int32_t>(value)) + " is not a " +
                Declared(level, field).enum_type()->name());
  }

  void Unknown(const text::Level& level, const text::Field* field, std::uint32_t number,
               text::WireType wire_type, std::string_view whole, std::string_view /*value*/) {
    ++(field == nullptr ? unknown_ : wrong_type_);
    if (findings_.full()) return;
    if (field != nullptr) {
      return AddKept(level, *field, whole,
                     std::string("declared as ") + Declared(level, *field).type_name() +
                         ", came as " + WireTypeName(wire_type));
    }
    const std::string path = text::PathTo(schema_.tables(), level);
    findings_.Add(path + (path.empty() ? "" : ": ") + "unknown field " + std::to_string(number) +
                  " at byte " + OffsetOf(whole) + ", " + WireTypeName(wire_type) + ", " +
                  std::to_string(whole.size()) + " bytes with its tag");
  }

  void Malformed(const text::Level& level, const text::Outcome& outcome) {
    findings_.texts.push_back(text::Explain(schema_.tables(), level, outcome));
  }

  // Adds what the walk found, and the required fields that the message, parsed from the same bytes,
  // lacks: it may have one in which they break.
  void Finish(const text::Outcome& outcome, const Message& message) {
    static_cast<text::Outcome&>(findings_) = outcome;
    findings_.unknown = unknown_;
    findings_.wrong_type = wrong_type_;
    findings_.missing = 0;
    if (message.IsInitialized()) return;
    std::vector<std::string> paths;
    findings_.missing = text::FindMissing(schema_.tables(), type_,
                                          message.SerializePartialAsString(), &paths, kMaxTexts);
    for (const std::string& path : paths) findings_.Add("missing required " + path);
  }

 private:
  std::string OffsetOf(std::string_view whole) const {
    return std::to_string(whole.data() - bytes_.data());
  }

  const FieldDescriptor& Declared(const text::Level& level, const text::Field& field) const {
    const TypeInfo& type = schema_.types()[level.field == nullptr ? type_ : level.field->below];
    return *type.type->FindFieldByNumber(static_cast<int>(schema_.tables().NumberOf(field)));
  }

  // A declared field that is kept as an unknown one.
  void AddKept(const text::Level& level, const text::Field& field, std::string_view whole,
               const std::string& why) {
    findings_.Add(text::PathTo(schema_.tables(), level, field) + ": " + why +
                  "; kept as unknown field " + std::to_string(schema_.tables().NumberOf(field)) +
                  " (byte " + OffsetOf(whole) + ")");
  }

  const Schema& schema_;
  const std::string_view bytes_;
  const unsigned type_;
  Findings& findings_;
  // Fields that were read to their end.
  std::uint32_t unknown_ = 0;
  std::uint32_t wrong_type_ = 0;
};

}  // namespace

void Findings::Add(std::string text) {
  if (!full()) texts.push_back(std::move(text));
}

bool Findings::full() const { return texts.size() >= kMaxTexts; }

std::string Findings::Lines() const {
  std::string lines;
  for (const std::string& text : texts) lines += "# " + text + "\n";
  if (full()) {
    lines += "# only the first " + std::to_string(kMaxTexts) + " findings are shown\n";
  }
  return lines;
}

std::string Findings::Summary() const {
  const std::pair<const char*, std::size_t> counts[] = {
      {"required fields missing", missing}, {"undeclared values", undeclared},
      {"wrong wire types", wrong_type},     {"unknown fields", unknown},
      {"texts not UTF-8", not_utf8},
  };
  std::string summary = malformed() ? "malformed" : "";
  for (const auto& [name, count] : counts) {
    if (count == 0) continue;
    summary += (summary.empty() ? "" : ", ") + std::string(name) + ": " + std::to_string(count);
  }
  return summary;
}

Findings ParseAndCheck(const Schema& schema, std::string_view bytes, Message& message) {
  const bool parsed = message.ParsePartialFromArray(bytes.data(), static_cast<int>(bytes.size()));
  const unsigned type = schema.FindType(message.GetDescriptor()->full_name())->index;
  Findings findings;
  Reporter reporter(schema, bytes, type, findings);
  text::Outcome outcome = text::WalkMessage(schema.tables(), type, bytes, reporter);
  // The walk follows the runtime's rules; should they ever differ, the runtime decides.
  if (!outcome.malformed() && !parsed) {
    outcome.fault = text::Fault::kEndsInside;
    findings.texts.push_back("malformed at byte " + std::to_string(bytes.size()) +
                             ": the runtime refuses these bytes");
  }
  reporter.Finish(outcome, message);
  return findings;
}

}  // namespace virtual_modem::inspect
