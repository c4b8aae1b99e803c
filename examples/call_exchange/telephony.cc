#include "call_exchange/telephony.h"

#include <stdexcept>
#include <utility>

namespace example {

Telephony::Telephony(Endpoint& endpoint, Timeline& timeline, std::chrono::milliseconds timeout,
                     Settings settings)
    : endpoint_(endpoint),
      timeline_(timeline),
      timeout_(timeout),
      settings_(std::move(settings)),
      client_(endpoint, timeline, timeout) {
  client_.OnNews([this](Operation /*operation*/, const MessageLite& message) {
    news_.emplace_back(message.New())->CheckTypeAndMergeFrom(message);
  });
}

std::unique_ptr<MessageLite> Telephony::Next() {
  client_.Run([this] { return !news_.empty(); }, Clock::now() + timeout_);
  Require(!news_.empty(), "the modem sent nothing");
  auto message = std::move(news_.front());
  news_.pop_front();
  return message;
}

void Telephony::Require(bool met, const std::string& what_is_wrong) const {
  if (met) return;
  throw std::runtime_error(endpoint_.connected() ? what_is_wrong
                                                 : what_is_wrong + ": " + endpoint_.why_ended());
}

}  // namespace example
