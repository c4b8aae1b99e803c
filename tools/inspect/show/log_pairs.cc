#include <algorithm>
#include <array>
#include <string>
#include <utility>

#include "inspect/examine/pairs.h"
#include "inspect/show/clock.h"
#include "inspect/show/log_view.h"

namespace virtual_modem::inspect {
namespace {

class Pairs : public LogView {
 public:
  Pairs(bool json, Output& out)
      : json_(json),
        out_(out),
        pairing_([this](PairKind kind, const Half* request, const Half* response) {
          Show(kind, request, response);
        }) {}

  void Take(const Record& record, const Glance& glance, bool passes) override {
    if (record.type == nullptr || !glance.serial) return;
    Half half;
    half.time = record.time;
    half.time_text = json_ ? Clock::Json(record) : std::string(clock_.Local(record));
    half.type = record.name;
    half.error = glance.error;
    half.serial = *glance.serial;
    half.direction = record.direction;
    half.wanted = passes;
    pairing_.Take(record.type->kind, std::move(half));
  }

  void Finish() override {
    pairing_.Finish();
    if (json_) return;
    out_.Append("# ").Append(counts_[0]).Append(" answered");
    if (timed_ > 0) {
      out_.Append(" after ").Append(Milliseconds(latency_sum_ / timed_)).Append(" ms on average, ");
      out_.Append(Milliseconds(longest_)).Append(" ms at most");
    }
    out_.Append("; ").Append(counts_[1]).Append(" not answered, ").Append(counts_[2]);
    out_.Append(" answered again, ").Append(counts_[3]).Append(" responses without a request\n");
  }

 private:
  void Show(PairKind kind, const Half* request, const Half* response) {
    const bool wanted =
        (request != nullptr && request->wanted) || (response != nullptr && response->wanted);
    if (!wanted) return;
    ++counts_.at(static_cast<std::size_t>(kind));
    const Half& first = kind == PairKind::kAnswered || response == nullptr ? *request : *response;
    std::string latency;
    if (kind == PairKind::kAnswered && request->time != kNoTime && response->time != kNoTime) {
      const auto known = Latency(*request, *response);
      if (known) Count(*known);
      latency = known ? Milliseconds(*known) : "null";
    }
    if (json_) {
      ShowJson(kind, first, request, response, latency);
    } else {
      ShowText(kind, first, request, response, latency);
    }
  }

  void Count(std::int64_t latency) {
    ++timed_;
    latency_sum_ += latency;
    longest_ = std::max(longest_, latency);
  }

  void ShowJson(PairKind kind, const Half& first, const Half* request, const Half* response,
                const std::string& latency) {
    out_.Append("{\"time\":").Append(first.time_text).Append(",\"serial\":").Append(first.serial);
    if (request != nullptr) out_.Append(",\"request\":\"").Append(request->type).Append("\"");
    if (response != nullptr) {
      out_.Append(",\"response\":\"").Append(response->type).Append("\"");
      if (!response->error.empty())
        out_.Append(",\"error\":\"").Append(response->error).Append("\"");
    }
    if (!latency.empty()) out_.Append(",\"latency_ms\":").Append(latency);
    if (kind != PairKind::kAnswered)
      out_.Append(",\"problem\":\"").Append(Problem(kind)).Append("\"");
    out_.Append("}\n");
  }

  void ShowText(PairKind kind, const Half& first, const Half* request, const Half* response,
                const std::string& latency) {
    out_.Append(first.time_text).Append(" #").Append(first.serial).Append(" ");
    if (request != nullptr) out_.Append(request->type).Append(response != nullptr ? " > " : "");
    if (response != nullptr) {
      out_.Append(response->type);
      if (!response->error.empty()) out_.Append(" ").Append(response->error);
    }
    if (latency == "null") {
      out_.Append(" after an unknown time");
    } else if (!latency.empty()) {
      out_.Append(" after ").Append(latency).Append(" ms");
    }
    if (kind != PairKind::kAnswered) out_.Append(": ").Append(Problem(kind));
    out_.Append("\n");
  }

  const bool json_;
  Output& out_;
  Clock clock_;
  Pairing pairing_;
  std::array<std::int64_t, static_cast<std::size_t>(PairKind::kKinds)> counts_{};
  std::int64_t timed_ = 0;  // pairs whose latency is known
  std::int64_t latency_sum_ = 0;
  std::int64_t longest_ = 0;
};

}  // namespace

std::unique_ptr<LogView> MakePairs(bool json, Output& out) {
  return std::make_unique<Pairs>(json, out);
}

}  // namespace virtual_modem::inspect
