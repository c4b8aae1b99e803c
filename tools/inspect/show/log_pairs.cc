#include <algorithm>
#include <array>
#include <optional>
#include <string>
#include <utility>

#include "inspect/examine/pairs.h"
#include "inspect/show/clock.h"
#include "inspect/show/log_view.h"

namespace virtual_modem::inspect {
namespace {

class Pairs : public LogView, Pairing {
 public:
  Pairs(bool json, Output& out) : json_(json), out_(out) {}

  void Take(const Record& record, const Glance& glance, bool passes) override {
    if (record.type == nullptr || !glance.serial) return;
    Half half(record, glance, passes);
    half.time_text = json_ ? Clock::Json(record) : std::string(clock_.Local(record));
    TakeHalf(record.type->kind, std::move(half));
  }

  void Finish() override {
    FinishPairs();
    if (json_) return;
    out_.Append("# ").Append(counts_[0]).Append(" answered");
    if (timed_ > 0) {
      const auto average = static_cast<std::int64_t>(latency_sum_ / static_cast<double>(timed_));
      out_.Append(" after ").Append(Milliseconds(average)).Append(" ms on average, ");
      out_.Append(Milliseconds(longest_)).Append(" ms at most");
    }
    out_.Append("; ").Append(counts_[1]).Append(" not answered, ").Append(counts_[2]);
    out_.Append(" answered again, ").Append(counts_[3]).Append(" responses without a request\n");
  }

 private:
  void TakePair(PairKind kind, const Half* request, const Half* response) override {
    const bool wanted =
        (request != nullptr && request->wanted) || (response != nullptr && response->wanted);
    if (!wanted) return;
    ++counts_.at(static_cast<std::size_t>(kind));
    const bool answered = kind == PairKind::kAnswered && request != nullptr && response != nullptr;
    const Half& first = answered || response == nullptr ? *request : *response;
    const bool timed = answered && request->time != kNoTime && response->time != kNoTime;
    const auto latency = timed ? Latency(*request, *response) : std::nullopt;
    if (latency) {
      ++timed_;
      latency_sum_ += static_cast<double>(*latency);
      longest_ = std::max(longest_, *latency);
    }
    const std::string time = latency ? Milliseconds(*latency) : "";
    out_.Append(json_ ? "{\"time\":" : "").Append(first.time_text);
    out_.Append(json_ ? ",\"serial\":" : " #").Append(first.serial);
    if (json_) {
      if (request != nullptr) Member("request", request->type);
      if (response != nullptr) Member("response", response->type);
      if (response != nullptr && !response->error.empty()) Member("error", response->error);
      if (timed) out_.Append(",\"latency_ms\":").Append(latency ? time : "null");
      if (kind != PairKind::kAnswered) Member("problem", Problem(kind));
      out_.Append("}\n");
      return;
    }
    if (request != nullptr) out_.Append(" ").Append(request->type);
    if (request != nullptr && response != nullptr) out_.Append(" >");
    if (response != nullptr) out_.Append(" ").Append(response->type);
    if (response != nullptr && !response->error.empty()) out_.Append(" ").Append(response->error);
    if (timed) out_.Append(" after ").Append(latency ? time + " ms" : "an unknown time");
    if (kind != PairKind::kAnswered) out_.Append(": ").Append(Problem(kind));
    out_.Append("\n");
  }

  void Member(std::string_view key, std::string_view value) {
    out_.Append(",\"").Append(key).Append("\":\"").Append(value).Append("\"");
  }

  const bool json_;
  Output& out_;
  Clock clock_;
  std::array<std::int64_t, static_cast<std::size_t>(PairKind::kKinds)> counts_{};
  std::int64_t timed_ = 0;  // pairs whose latency is known
  double latency_sum_ = 0;  // what integers cannot count, too
  std::int64_t longest_ = 0;
};

}  // namespace

std::unique_ptr<LogView> MakePairs(bool json, Output& out) {
  return std::make_unique<Pairs>(json, out);
}

}  // namespace virtual_modem::inspect
