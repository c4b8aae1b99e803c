#include "inspect/show/printer.h"

#include "inspect/show/json.h"
#include "text/mask.h"
#include "text/print.h"

namespace virtual_modem::inspect {

Printer::Printer(Schema& schema, const PrinterOptions& options, Output& out)
    : schema_(schema), options_(options), out_(out) {
  if (options.mask) schema.RequireSubscriberData();
}

text::Outcome Printer::AppendText(unsigned type, std::string_view bytes, bool whatever_comes) {
  const text::Show show = options_.mask ? text::Show::kMasked : text::Show::kAll;
  return out_.Append(
      [&](text::Sink& sink) {
        return text::Print(schema_.tables(), type, bytes, show, options_.single_line, sink);
      },
      [&](const text::Outcome& outcome) { return whatever_comes || IsPlain(outcome); });
}

Findings Printer::Print(unsigned type, std::string_view bytes) {
  if (!options_.json && IsPlain(AppendText(type, bytes, false))) return {};

  Findings findings;
  bool shape = false;
  std::string canonical;
  text::Handler none;
  if (!options_.json || !IsPlain(text::WalkMessage(schema_.tables(), type, bytes, none))) {
    Message& message = schema_.Scratch(type);
    findings = ParseAndCheck(schema_, bytes, message);
    findings.hidden = options_.mask && options_.misfit == Misfit::kHide && findings.misfit();
    if (findings.hidden) return findings;
    shape = options_.misfit == Misfit::kShape && findings.doubtful();
    // The findings tell of what is unknown.
    if (options_.mask && !options_.json) message.DiscardUnknownFields();
    canonical = message.SerializePartialAsString();
    bytes = canonical;
  }
  if (options_.mask) {
    masked_.clear();
    text::AppendMasked(schema_.tables(), type, bytes,
                       shape ? text::Show::kShape : text::Show::kMasked, masked_);
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

}  // namespace virtual_modem::inspect
