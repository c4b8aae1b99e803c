// identify: which types can bytes of an unknown type be? The wire format does not say, and takes
// almost anything, so the answer is a ranking with its reasons, in which many can be first.
#include <google/protobuf/descriptor.h>

#include <algorithm>
#include <iostream>
#include <string>
#include <tuple>
#include <vector>

#include "inspect/commands/commands.h"
#include "inspect/error.h"
#include "inspect/examine/findings.h"
#include "text/walk.h"

namespace virtual_modem::inspect {
namespace {

constexpr std::size_t kMaxBytes = 256U << 10U;

// How well a type fits the bytes.
struct Candidate {
  const Descriptor* type = nullptr;
  Findings findings;
  int present = 0;          // fields of the type that are there, at its top level
  bool same_bytes = false;  // the library would have written the same bytes
  bool readable = true;     // no string has control characters, as misread submessages do
  bool is_record = false;   // other messages carry the type, so it hardly comes by itself

  bool Fits() const { return findings.empty() && same_bytes && readable; }

  // Smaller is better; candidates of equal rank are told apart by nothing.
  auto Rank() const {
    return std::make_tuple(findings.missing != 0, findings.wrong_type, findings.unknown,
                           findings.undeclared, !same_bytes, !readable, is_record,
                           type->field_count() - present);
  }
};

// Looks for control characters in strings.
struct Reading : text::Handler {
  void String(const text::Level& /*level*/, const text::Field& /*field*/, std::string_view bytes) {
    const auto is_control = [](char c) { return c >= 0 && c < ' '; };
    readable = readable && std::none_of(bytes.begin(), bytes.end(), is_control);
  }
  bool readable = true;
};

bool IsRecord(const Schema& schema, const Descriptor& type) {
  const auto& fields = schema.fields();
  return std::any_of(fields.begin(), fields.end(),
                     [&](const FieldDescriptor* field) { return field->message_type() == &type; });
}

Candidate Try(Schema& schema, const TypeInfo& type, const std::string& bytes) {
  Message& message = schema.Scratch(type.index);
  Candidate candidate;
  candidate.type = type.type;
  candidate.findings = ParseAndCheck(schema, bytes, message);
  std::vector<const FieldDescriptor*> fields;
  message.GetReflection()->ListFields(message, &fields);
  candidate.present = static_cast<int>(fields.size());
  candidate.same_bytes = message.SerializePartialAsString() == bytes;
  Reading reading;
  text::WalkMessage(schema.tables(), type.index, bytes, reading);
  candidate.readable = reading.readable;
  candidate.is_record = IsRecord(schema, *type.type);
  return candidate;
}

std::string Reasons(const Candidate& candidate) {
  std::string reasons = candidate.findings.Summary();
  if (candidate.Fits()) {
    reasons = "fits: fully parsed, initialized, no unknown fields, values in range";
  } else if (reasons.empty()) {
    reasons = "initialized";
  }
  if (!candidate.same_bytes) reasons += ", not the bytes that the library writes";
  if (!candidate.readable) reasons += ", control characters in a string";
  reasons += ", " + std::to_string(candidate.present) + " of " +
             std::to_string(candidate.type->field_count()) + " fields present";
  if (candidate.is_record) reasons += ", a record within other messages";
  return reasons;
}

// The candidates in order, each line with all types of one rank and layout.
void PrintRanking(const std::vector<Candidate>& candidates) {
  std::vector<const Descriptor*> told;
  std::size_t rank = 0;
  for (std::size_t i = 0; i < candidates.size(); ++i) {
    const Candidate& candidate = candidates[i];
    if (i == 0 || candidates[i - 1].Rank() != candidate.Rank()) rank = i + 1;
    if (std::find(told.begin(), told.end(), candidate.type) != told.end()) continue;
    std::cout << rank << ". " << candidate.type->full_name();
    bool twins = false;
    for (std::size_t j = i + 1; j < candidates.size(); ++j) {
      if (candidates[j].Rank() != candidate.Rank()) break;
      if (!SameLayout(*candidates[j].type, *candidate.type)) continue;
      std::cout << " = " << candidates[j].type->full_name();
      told.push_back(candidates[j].type);
      twins = true;
    }
    std::cout << (twins ? " (twins: one layout)\n   " : "\n   ") << Reasons(candidate) << '\n';
  }
}

}  // namespace

Status IdentifyCommand(Schema& schema, const Options& options) {
  const std::string bytes = ReadBytes(options.source);
  const std::string name = DisplayName(options.source);
  if (bytes.empty()) throw Error(name + ": there are no bytes to identify");
  // Every type reads all of them.
  if (bytes.size() > kMaxBytes) {
    throw Error(name + ": " + std::to_string(bytes.size()) +
                " bytes; types are tried on 256 KiB at most");
  }

  std::vector<Candidate> candidates;
  for (const TypeInfo& type : schema.types()) {
    Candidate candidate = Try(schema, type, bytes);
    if (!candidate.findings.malformed() && candidate.present != 0) {
      candidates.push_back(std::move(candidate));
    }
  }
  if (candidates.empty()) {
    throw Error(name + ": no message of the schema has these bytes");
  }
  std::stable_sort(candidates.begin(), candidates.end(),
                   [](const Candidate& a, const Candidate& b) { return a.Rank() < b.Rank(); });
  const auto first = static_cast<std::size_t>(
      std::count_if(candidates.begin(), candidates.end(),
                    [&](const Candidate& c) { return c.Rank() == candidates.front().Rank(); }));

  // All that are first, and a few after them.
  constexpr std::size_t kShown = 5;
  const std::size_t all = candidates.size();
  if (!options.all) candidates.resize(std::min(all, std::max(first, kShown)));
  PrintRanking(candidates);
  if (first > 1) std::cout << first << " types are first: the bytes do not tell them apart.\n";
  if (candidates.size() < all) {
    std::cout << all - candidates.size() << " more types fit less well (--all shows them).\n";
  }
  return kOk;
}

}  // namespace virtual_modem::inspect
