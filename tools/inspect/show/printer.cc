#include "inspect/show/printer.h"

#include "inspect/examine/redact.h"
#include "inspect/show/json.h"
#include "text/mask.h"
#include "text/print.h"

namespace virtual_modem::inspect {
namespace {

// Nothing is to be told, and the order of the bytes is that of the text.
bool IsPlain(const text::Outcome& outcome) {
  return outcome.canonical && outcome.acceptable() && outcome.unknown == 0 &&
         outcome.undeclared == 0 && outcome.wrong_type == 0;
}

}  // namespace

Printer::Printer(Schema& schema, const PrinterOptions& options, Output& out)
    : schema_(schema), options_(options), out_(out) {
  if (options.redact) schema.RequireSubscriberData();
}

text::Outcome Printer::AppendText(unsigned type, std::string_view bytes, bool whatever_comes) {
  const text::Show show = options_.redact ? text::Show::kMasked : text::Show::kAll;
  return out_.Append(
      [&](text::Sink& sink) {
        return text::Print(schema_.tables(), type, bytes, show, options_.single_line, sink);
      },
      [&](const text::Outcome& outcome) { return whatever_comes || IsPlain(outcome); });
}

Findings Printer::Print(unsigned type, std::string_view bytes) {
  shown_ = true;
  if (!options_.json && IsPlain(AppendText(type, bytes, false))) return {};

  Findings findings;
  bool shape = false;
  std::string canonical;
  text::Handler none;
  if (!options_.json || !IsPlain(text::WalkMessage(schema_.tables(), type, bytes, none))) {
    Message& message = MessageOf(type);
    findings = ParseAndCheck(schema_, bytes, message);
    shown_ = !options_.redact || options_.misfit != Misfit::kHide || !findings.misfit();
    if (!shown_) return findings;
    shape = options_.misfit == Misfit::kShape &&
            (!findings.acceptable() || findings.count(Findings::kWireType) != 0);
    // The findings tell of what is unknown.
    if (options_.redact && !options_.json) message.DiscardUnknownFields();
    canonical = message.SerializePartialAsString();
    bytes = canonical;
  }
  if (options_.redact) {
    masked_ = Redact(schema_, *schema_.messages()[type], bytes, shape);
    bytes = masked_;
  }
  if (options_.json) {
    json_.clear();
    AppendJson(schema_, type, bytes, !options_.single_line, json_, findings);
    out_.Append(json_);
  } else {
    AppendText(type, bytes, true);
  }
  return findings;
}

Message& Printer::MessageOf(unsigned type) {
  std::unique_ptr<Message>& message = messages_[type];
  if (!message) message = schema_.NewMessage(*schema_.messages()[type]);
  return *message;
}

}  // namespace virtual_modem::inspect
