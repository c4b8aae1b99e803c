// A sequence diagram as Mermaid reads it: https://mermaid.js.org/syntax/sequenceDiagram.html
#include <string>
#include <vector>

#include "inspect/examine/findings.h"
#include "inspect/examine/pairs.h"
#include "inspect/schema/schema.h"
#include "inspect/show/clock.h"
#include "inspect/show/log_view.h"

namespace virtual_modem::inspect {
namespace {

bool IsLetter(char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_'; }

// What could be more to Mermaid than text becomes the number of its character, also in the word
// "end", which closes blocks.
std::string Escape(std::string_view text) {
  std::string safe;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const bool in_word = i > 0 && IsLetter(text[i - 1]);
    const bool ends_block = !in_word && Lower(text.substr(i, 3)) == "end" &&
                            (i + 3 == text.size() || !IsLetter(text[i + 3]));
    const bool plain = IsLetter(text[i]) || (text[i] >= '0' && text[i] <= '9') ||
                       std::string_view(" .,()-").find(text[i]) != std::string_view::npos;
    if (plain && !ends_block) {
      safe += text[i];
    } else {
      safe += "#" + std::to_string(static_cast<unsigned char>(text[i])) + ";";
    }
  }
  return safe;
}

class Diagram : public LogView, Pairing {
 public:
  Diagram(Schema& schema, bool pairs, Output& out) : schema_(schema), pairs_(pairs), out_(out) {
    out_.Append("sequenceDiagram\n  participant T as Telephony\n  participant M as Modem\n");
  }

  void Take(const Record& record, const Glance& glance, bool passes) override {
    const std::string_view kind = record.type == nullptr ? "record" : record.type->kind;
    std::string text = record.name.empty() ? "?" : Escape(record.name);
    if (record.operation != 0) text += " op " + std::to_string(record.operation);
    if (glance.serial) text += " serial " + std::to_string(*glance.serial);
    if (!glance.error.empty()) text += " " + Escape(glance.error);
    pair_.clear();
    if (pairs_ && glance.serial) TakeHalf(kind, Half(record, glance, passes));
    if (!passes) return;
    const char* arrow = kind == "request" ? "->>" : (kind == "response" ? "-->>" : "-)");
    const bool to_modem = record.direction == Direction::kToModem;
    out_.Append(to_modem ? "  T" : "  M").Append(arrow).Append(to_modem ? "M: " : "T: ");
    out_.Append(text).Append(pair_).Append("\n");
    std::vector<std::string> findings;
    if (record.type != nullptr && !IsPlain(glance.outcome)) {
      Message& message = schema_.Scratch(record.type->index);
      findings = ParseAndCheck(schema_, record.bytes, message).texts;
    }
    AddRemark(record, findings);
    Note(findings);
  }

  void Finish() override { FinishPairs(); }

 private:
  void TakePair(PairKind kind, const Half* request, const Half* response) override {
    if (response == nullptr) {
      if (!request->wanted) return;
      Note({request->type + " serial " + std::to_string(request->serial) + ": " + Problem(kind)});
    } else if (kind != PairKind::kAnswered) {
      pair_ = std::string(" - ") + Problem(kind);
    } else if (const auto latency = Latency(*request, *response)) {
      pair_ = " after " + Milliseconds(*latency) + " ms";
    } else {
      pair_ = " after an unknown time";
    }
  }

  void Note(const std::vector<std::string>& texts) {
    constexpr std::size_t kShown = 3;
    std::string note;
    for (std::size_t i = 0; i < texts.size() && i < kShown; ++i) {
      note += (i == 0 ? "" : "<br/>") + Escape(texts[i]);
    }
    if (texts.size() > kShown)
      note += "<br/>and " + std::to_string(texts.size() - kShown) + " more";
    if (!note.empty()) out_.Append("  Note over T,M: ").Append(note).Append("\n");
  }

  Schema& schema_;
  const bool pairs_;
  Output& out_;
  std::string pair_;  // what the response in hand is told to have to do with its request
};

}  // namespace

std::unique_ptr<LogView> MakeDiagram(Schema& schema, bool pairs, Output& out) {
  return std::make_unique<Diagram>(schema, pairs, out);
}

}  // namespace virtual_modem::inspect
