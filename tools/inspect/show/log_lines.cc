#include <string>
#include <vector>

#include "inspect/show/clock.h"
#include "inspect/show/json.h"
#include "inspect/show/log_view.h"
#include "inspect/show/printer.h"

namespace virtual_modem::inspect {
namespace {

class Lines : public LogView {
 public:
  Lines(Schema& schema, bool json, bool mask, Output& out)
      : json_(json), printer_(schema, {json, mask, Misfit::kShape, true}, out), out_(out) {}

  void Take(const Record& record, const Glance& glance, bool passes) override {
    if (!passes) return;
    if (json_) {
      ShowJson(record, glance);
    } else {
      ShowText(record, glance);
    }
  }

 private:
  void ShowText(const Record& record, const Glance& glance) {
    out_.Append(clock_.Local(record))
        .Append(record.direction == Direction::kToModem ? " > " : " < ")
        .Append(record.name.empty() ? std::string_view("?") : record.name);
    if (record.operation != 0) out_.Append(" op ").Append(record.operation);
    if (glance.serial) {
      out_.Append(" #").Append(*glance.serial);
    } else {
      out_.Append(" -");
    }
    out_.Append(" ").Append(static_cast<std::int64_t>(record.bytes.size())).Append(" B ");
    const char* separator = " # ";
    for (const std::string& text : PrintMessage(record)) {
      out_.Append(separator).Append(text);
      separator = "; ";
    }
    out_.Append("\n");
  }

  void ShowJson(const Record& record, const Glance& glance) {
    out_.Append("{\"time\":").Append(Clock::Json(record)).Append(",\"direction\":\"");
    out_.Append(record.direction == Direction::kToModem ? "to modem" : "to telephony").Append("\"");
    if (!record.name.empty()) out_.Append(",\"type\":\"").Append(record.name).Append("\"");
    if (record.type != nullptr) {
      out_.Append(",\"unit\":\"").Append(record.type->unit).Append("\",\"kind\":\"");
      out_.Append(record.type->kind).Append("\"");
    }
    if (record.operation != 0) out_.Append(",\"operation\":").Append(record.operation);
    if (glance.serial) out_.Append(",\"serial\":").Append(*glance.serial);
    out_.Append(",\"size\":").Append(static_cast<std::int64_t>(record.bytes.size()));
    if (record.type != nullptr) out_.Append(",\"message\":");
    std::string findings;
    for (const std::string& text : PrintMessage(record)) {
      findings += findings.empty() ? ",\"findings\":[" : ",";
      AppendJsonString(text, findings);
    }
    out_.Append(findings).Append(findings.empty() ? "}\n" : "]}\n");
  }

  // Returns what is wrong with it.
  std::vector<std::string> PrintMessage(const Record& record) {
    std::vector<std::string> texts;
    if (record.type != nullptr) texts = printer_.Print(record.type->index, record.bytes).texts;
    AddRemark(record, texts);
    return texts;
  }

  const bool json_;
  Printer printer_;
  Clock clock_;
  Output& out_;
};

}  // namespace

void AddRemark(const Record& record, std::vector<std::string>& texts) {
  const bool strange = record.type == nullptr && !record.name.empty() && record.problem.empty();
  const std::string remark = strange ? "the schema has no such type" : record.problem;
  if (!remark.empty()) texts.insert(texts.begin(), remark);
}

std::unique_ptr<LogView> MakeLines(Schema& schema, bool json, bool mask, Output& out) {
  return std::make_unique<Lines>(schema, json, mask, out);
}

}  // namespace virtual_modem::inspect
