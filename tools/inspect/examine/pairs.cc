#include "inspect/examine/pairs.h"

#include <utility>

namespace virtual_modem::inspect {

const char* Problem(PairKind kind) {
  switch (kind) {
    case PairKind::kUnanswered:
      return "no response";
    case PairKind::kAnsweredAgain:
      return "answered again";
    case PairKind::kUnasked:
      return "no request";
    default:
      return "";
  }
}

Half MakeHalf(const Record& record, const Glance& glance, bool wanted) {
  Half half;
  half.time = record.time;
  half.type = record.name;
  half.error = glance.error;
  half.serial = glance.serial.value_or(0);
  half.direction = record.direction;
  half.wanted = wanted;
  return half;
}

std::optional<std::int64_t> Latency(const Half& request, const Half& response) {
  constexpr std::int64_t kDay = std::int64_t{86'400} * 1'000'000'000;
  if (request.time == kNoTime || response.time == kNoTime) return std::nullopt;
  if (response.time < request.time || response.time - request.time > kDay) return std::nullopt;
  return response.time - request.time;
}

void Pairing::Take(std::string_view kind, Half half) {
  if (kind == "request") {
    Request(std::move(half));
  } else if (kind == "response") {
    Response(half);
  }
}

Pairing::Key Pairing::KeyOf(std::int32_t serial, Direction direction) {
  return Key{static_cast<std::uint32_t>(serial)} << 1U | static_cast<Key>(direction);
}

void Pairing::GiveUp(std::map<std::int64_t, Half>::iterator request) {
  report_(PairKind::kUnanswered, &request->second, nullptr);
  waiting_by_key_.erase(KeyOf(request->second.serial, request->second.direction));
  waiting_.erase(request);
}

void Pairing::Request(Half request) {
  const Key key = KeyOf(request.serial, request.direction);
  // A serial that is used again stands for the new request alone.
  const auto old = waiting_by_key_.find(key);
  if (old != waiting_by_key_.end()) GiveUp(waiting_.find(old->second));
  answered_.erase(key);
  request.number = ++requests_;
  waiting_by_key_[key] = request.number;
  waiting_.emplace(request.number, std::move(request));
  if (waiting_.size() > limit_) GiveUp(waiting_.begin());
}

void Pairing::Response(const Half& response) {
  const Direction asked =
      response.direction == Direction::kToModem ? Direction::kToTelephony : Direction::kToModem;
  const Key key = KeyOf(response.serial, asked);
  const auto waiting = waiting_by_key_.find(key);
  if (waiting == waiting_by_key_.end()) {
    const auto answered = answered_.find(key);
    const bool again = answered != answered_.end();
    report_(again ? PairKind::kAnsweredAgain : PairKind::kUnasked,
            again ? &answered->second : nullptr, &response);
    return;
  }
  const auto request = waiting_.find(waiting->second);
  report_(PairKind::kAnswered, &request->second, &response);
  answered_order_.emplace_back(key, request->first);
  answered_[key] = std::move(request->second);
  waiting_.erase(request);
  waiting_by_key_.erase(waiting);
  if (answered_order_.size() > limit_) {
    const auto [oldest, number] = answered_order_.front();
    answered_order_.pop_front();
    const auto found = answered_.find(oldest);
    if (found != answered_.end() && found->second.number == number) answered_.erase(found);
  }
}

void Pairing::Finish() {
  while (!waiting_.empty()) GiveUp(waiting_.begin());
}

}  // namespace virtual_modem::inspect
