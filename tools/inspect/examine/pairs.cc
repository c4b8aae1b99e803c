#include "inspect/examine/pairs.h"

#include <utility>

namespace virtual_modem::inspect {
namespace {

// A request that is still waiting when so many came after it counts as unanswered.
constexpr std::size_t kMostRequests = 1U << 16U;

}  // namespace

const char* Problem(PairKind kind) {
  constexpr const char* kProblems[] = {"", "no response", "answered again", "no request"};
  return kProblems[static_cast<std::size_t>(kind)];
}

std::optional<std::int64_t> Latency(const Half& request, const Half& response) {
  constexpr std::int64_t kDay = std::int64_t{86'400} * 1'000'000'000;
  if (request.time == kNoTime || response.time == kNoTime) return std::nullopt;
  if (response.time < request.time || response.time - request.time > kDay) return std::nullopt;
  return response.time - request.time;
}

void Pairing::TakeHalf(std::string_view kind, Half half) {
  const bool is_request = kind == "request";
  if (!is_request && kind != "response") return;
  const bool asked_by_telephony = (half.direction == Direction::kToModem) == is_request;
  const Key key = Key{static_cast<std::uint32_t>(half.serial)} << 1U | Key{asked_by_telephony};
  const auto known = requests_.find(key);
  if (is_request) {
    // A serial that is used again stands for the new request alone.
    if (known != requests_.end()) Forget(key, known->second.number);
    requests_.emplace(key, Request{std::move(half), ++taken_});
    order_.emplace_back(key, taken_);
    if (order_.size() <= kMostRequests) return;
    Forget(order_.front().first, order_.front().second);
    order_.pop_front();
  } else if (known == requests_.end()) {
    TakePair(PairKind::kUnasked, nullptr, &half);
  } else {
    Request& request = known->second;
    TakePair(request.answered ? PairKind::kAnsweredAgain : PairKind::kAnswered, &request.half,
             &half);
    request.answered = true;
  }
}

// The number tells the request from a later one of the same key.
void Pairing::Forget(Key key, std::int64_t number) {
  const auto request = requests_.find(key);
  if (request == requests_.end() || request->second.number != number) return;
  if (!request->second.answered) TakePair(PairKind::kUnanswered, &request->second.half, nullptr);
  requests_.erase(request);
}

void Pairing::FinishPairs() {
  for (const auto& [key, number] : order_) Forget(key, number);
}

}  // namespace virtual_modem::inspect
