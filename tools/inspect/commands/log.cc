// log: what captures and logs hold, as lines, pairs, counts or a diagram.
#include <algorithm>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "inspect/commands/commands.h"
#include "inspect/error.h"
#include "inspect/examine/glance.h"
#include "inspect/read/recording.h"
#include "inspect/show/log_view.h"

namespace virtual_modem::inspect {
namespace {

class Filter {
 public:
  Filter(const Schema& schema, const Options& options) : schema_(schema), options_(options) {
    for (const std::string& name : options.types) types_.push_back(&schema.GetType(name));
    for (const std::string& unit : options.units) CheckUnit(unit);
    if (!options.grep.empty()) condition_ = ParseCondition(schema, options.grep);
  }

  const FieldCondition* condition() const { return condition_ ? &*condition_ : nullptr; }

  bool Passes(const Record& record, const Glance& glance) const {
    const auto among = [](const auto& list, const auto& value) {
      return list.empty() || std::find(list.begin(), list.end(), value) != list.end();
    };
    if (record.type == nullptr) {
      return types_.empty() && options_.units.empty() && options_.kinds.empty() &&
             options_.serials.empty() && options_.grep.empty() && !options_.unknown;
    }
    if (!among(types_, record.type) || !among(options_.units, record.type->unit) ||
        !among(options_.kinds, record.type->kind) || !glance.has_field) {
      return false;
    }
    if (!options_.serials.empty() && (!glance.serial || !among(options_.serials, *glance.serial))) {
      return false;
    }
    if (!options_.incomplete && !options_.unknown) return true;
    const text::Outcome& outcome = glance.outcome;
    if (options_.unknown && outcome.unknown + outcome.undeclared + outcome.wrong_type != 0) {
      return true;
    }
    return options_.incomplete && (!record.problem.empty() || !outcome.acceptable());
  }

 private:
  void CheckUnit(const std::string& unit) const {
    std::string list;
    for (const TypeInfo& type : schema_.types()) {
      if (type.unit == unit) return;
      if (list.find(type.unit) == std::string::npos) list += (list.empty() ? "" : "|") + type.unit;
    }
    throw UsageError("--unit: " + unit + " is not one of " + list);
  }

  const Schema& schema_;
  const Options& options_;
  std::vector<const TypeInfo*> types_;
  std::optional<FieldCondition> condition_;
};

std::unique_ptr<LogView> MakeView(Schema& schema, const Options& options, Output& out) {
  if (options.diagram) return MakeDiagram(schema, options.pairs, out);
  if (options.pairs) return MakePairs(options.json, out);
  if (options.count) return MakeCounts(options.json, out);
  return MakeLines(schema, options.json, options.mask, out);
}

}  // namespace

Status LogCommand(Schema& schema, const Options& options) {
  const Filter filter(schema, options);
  Output out;
  const std::unique_ptr<LogView> view = MakeView(schema, options, out);
  const std::vector<std::string> input{"-"};
  Recording recording(schema, options.words.empty() ? input : options.words, options.follow,
                      [&out] { out.Flush(); });
  Record record;
  try {
    while (recording.Next(record)) {
      Glance glance;
      if (record.type != nullptr) {
        glance = TakeGlance(schema, *record.type, record.bytes, filter.condition());
      }
      view->Take(record, glance, filter.Passes(record, glance));
    }
  } catch (const Error&) {
    view->Finish();  // of what was whole
    throw;
  }
  view->Finish();
  out.Flush();
  recording.RequireMessages();
  recording.NotePassedOver();
  return kOk;
}

}  // namespace virtual_modem::inspect
