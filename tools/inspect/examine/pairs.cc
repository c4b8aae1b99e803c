#include "inspect/examine/pairs.h"

#include <utility>

namespace virtual_modem::inspect {
namespace {

// Of so many requests responses are awaited; the oldest one beyond them counts as unanswered.
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
  const auto known = by_key_.find(key);
  if (is_request) {
    // A serial that is used again stands for the new request alone.
    if (known != by_key_.end()) Forget(known->second);
    by_key_[key] = requests_.insert(requests_.end(), Request{key, std::move(half)});
    if (requests_.size() > kMostRequests) Forget(requests_.begin());
  } else if (known == by_key_.end()) {
    TakePair(PairKind::kUnasked, nullptr, &half);
  } else {
    Request& request = *known->second;
    TakePair(request.answered ? PairKind::kAnsweredAgain : PairKind::kAnswered, &request.half,
             &half);
    request.answered = true;
  }
}

void Pairing::Forget(Requests::iterator request) {
  if (!request->answered) TakePair(PairKind::kUnanswered, &request->half, nullptr);
  by_key_.erase(request->key);
  requests_.erase(request);
}

void Pairing::FinishPairs() {
  while (!requests_.empty()) Forget(requests_.begin());
}

}  // namespace virtual_modem::inspect
