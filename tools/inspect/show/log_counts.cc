#include <map>
#include <string>
#include <utility>

#include "inspect/show/log_view.h"

namespace virtual_modem::inspect {
namespace {

class Counts : public LogView {
 public:
  Counts(bool json, Output& out) : json_(json), out_(out) {}

  void Take(const Record& record, const Glance& glance, bool passes) override {
    if (!passes) return;
    ++counts_[{record.type != nullptr ? std::string(record.name) : "(unreadable)", glance.error}];
  }

  void Finish() override {
    for (const auto& [key, count] : counts_) {
      const auto& [type, error] = key;
      if (json_) {
        out_.Append("{\"type\":\"").Append(type).Append("\",");
        if (!error.empty()) out_.Append("\"error\":\"").Append(error).Append("\",");
        out_.Append("\"count\":").Append(count).Append("}\n");
        continue;
      }
      const std::string number = std::to_string(count);
      out_.Append(std::string(number.size() < 8 ? 8 - number.size() : 0, ' ')).Append(number);
      out_.Append("  ").Append(type).Append(error.empty() ? "" : "  ").Append(error).Append("\n");
    }
  }

 private:
  const bool json_;
  Output& out_;
  std::map<std::pair<std::string, std::string>, std::int64_t> counts_;  // by type and result
};

}  // namespace

std::unique_ptr<LogView> MakeCounts(bool json, Output& out) {
  return std::make_unique<Counts>(json, out);
}

}  // namespace virtual_modem::inspect
