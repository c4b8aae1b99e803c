#include "inspect/findings.h"

#include <google/protobuf/descriptor.h>

#include <algorithm>
#include <numeric>
#include <unordered_set>

#include "inspect/wire_walk.h"

namespace virtual_modem::inspect {
namespace {

using google::protobuf::FieldDescriptor;
using google::protobuf::Message;
using google::protobuf::Reflection;

constexpr std::size_t kMaxTexts = 100;

bool IsPresent(const Message& message, const std::vector<PathStep>& path) {
  const Message* at = &message;
  for (std::size_t i = 0; i + 1 < path.size(); ++i) {
    const Reflection& reflection = *at->GetReflection();
    const auto& [field, index] = path[i];
    if (index < 0) {
      at = &reflection.GetMessage(*at, field);
    } else if (index < reflection.FieldSize(*at, field)) {
      at = &reflection.GetRepeatedMessage(*at, field, index);
    } else {
      return false;
    }
  }
  return at->GetReflection()->HasField(*at, path.back().field);
}

// Turns what the walk comes by into findings. The message was parsed from the same bytes.
class Reporter : public WireVisitor {
 public:
  Reporter(const Message& message, Findings& findings) : message_(message), findings_(findings) {}

  void UndeclaredValue(const std::vector<PathStep>& path, std::int32_t number,
                       std::size_t offset) override {
    if (findings_.full()) return findings_.Add(Findings::kUndeclared, "");
    findings_.Add(Findings::kUndeclared, ToString(path) + ": " + std::to_string(number) +
                                             " is not a " + path.back().field->enum_type()->name() +
                                             Consequence(path, offset));
  }

  void UnknownField(const std::vector<PathStep>& path, int number, int wire_type,
                    std::size_t offset, std::size_t size) override {
    if (findings_.full()) return findings_.Add(Findings::kUnknown, "");
    const std::string where = path.empty() ? "" : ToString(path) + ": ";
    findings_.Add(Findings::kUnknown, where + "unknown field " + std::to_string(number) +
                                          " at byte " + std::to_string(offset) + ", " +
                                          WireTypeName(wire_type) + ", " + std::to_string(size) +
                                          " bytes with its tag");
  }

  void WrongWireType(const std::vector<PathStep>& path, int wire_type,
                     std::size_t offset) override {
    if (findings_.full()) return findings_.Add(Findings::kWireType, "");
    findings_.Add(Findings::kWireType, ToString(path) + ": declared as " +
                                           path.back().field->type_name() + ", came as " +
                                           WireTypeName(wire_type) + Consequence(path, offset));
  }

  void Malformed(const std::vector<PathStep>& path, std::size_t offset,
                 const std::string& why) override {
    const std::string where = path.empty() ? "" : " in " + ToString(path);
    findings_.Add(Findings::kMalformed,
                  "malformed at byte " + std::to_string(offset) + where + ": " + why);
  }

  // Names the required fields that are absent in the message and below, unless a line above did.
  void ReportMissing(const Message& message, std::vector<PathStep>& path) {
    const Reflection& reflection = *message.GetReflection();
    for (int i = 0; i < message.GetDescriptor()->field_count(); ++i) {
      const FieldDescriptor* field = message.GetDescriptor()->field(i);
      path.push_back({field, -1});
      if (field->is_required() && !reflection.HasField(message, field)) {
        const std::string name = findings_.full() ? "" : ToString(path);
        const bool told = name.empty() || told_.count(name) != 0;
        findings_.Add(Findings::kMissing, told ? "" : "missing required " + name);
      } else if (field->message_type() != nullptr && field->is_repeated()) {
        for (int n = 0; n < reflection.FieldSize(message, field); ++n) {
          path.back().index = n;
          ReportMissing(reflection.GetRepeatedMessage(message, field, n), path);
        }
      } else if (field->message_type() != nullptr && reflection.HasField(message, field)) {
        ReportMissing(reflection.GetMessage(message, field), path);
      }
      path.pop_back();
    }
  }

 private:
  // What became of a field whose value the message could not take.
  std::string Consequence(const std::vector<PathStep>& path, std::size_t offset) {
    const FieldDescriptor& field = *path.back().field;
    std::string text = "; kept as unknown field " + std::to_string(field.number()) + " (byte " +
                       std::to_string(offset) + ")";
    if (!field.is_repeated() && !IsPresent(message_, path)) {
      text += std::string(", so ") + (field.is_required() ? "required " : "") + field.name() +
              " is absent";
      told_.insert(ToString(path));
    }
    return text;
  }

  const Message& message_;
  Findings& findings_;
  std::unordered_set<std::string> told_;  // absent fields that were explained
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

Findings ParseAndCheck(std::string_view bytes, Message& message) {
  message.Clear();
  const bool parsed = message.ParsePartialFromArray(bytes.data(), static_cast<int>(bytes.size()));
  Findings findings;
  Reporter reporter(message, findings);
  const bool walked = WalkWire(bytes, *message.GetDescriptor(), reporter);
  // The walk follows the runtime's rules; should they ever differ, the runtime decides.
  if (walked && !parsed) reporter.Malformed({}, bytes.size(), "the runtime refuses these bytes");
  if (!message.IsInitialized()) {
    std::vector<PathStep> path;
    reporter.ReportMissing(message, path);
  }
  return findings;
}

}  // namespace virtual_modem::inspect
