#include "client/client.h"

#include <virtual_modem/text.h>

#include <algorithm>
#include <limits>
#include <string>

namespace example {

bool Client::Run(const std::function<bool()>& done, Clock::time_point until) {
  for (;;) {
    ExpireRequests();
    if (done() || !endpoint_.connected() || Clock::now() >= until) return done();
    auto deadline = until;
    for (const auto& [serial, pending] : pending_) deadline = std::min(deadline, pending.deadline);
    const auto received = endpoint_.Receive(deadline);
    if (!received) continue;
    if (received->type->kind == virtual_modem::Kind::kResponse && received->type->has_serial) {
      Settle(*received->type, *received->message);
    } else if (news_) {
      news_(received->operation, *received->message);
    }
  }
}

// Positive, since a negative number takes ten bytes, and never one that is still awaited.
std::int32_t Client::NextSerial() {
  std::int32_t serial = 0;
  do {
    serial = next_serial_;
    next_serial_ = serial == std::numeric_limits<std::int32_t>::max() ? 1 : serial + 1;
  } while (pending_.count(serial) != 0);
  return serial;
}

// Gives a response to the caller who asked for it.
void Client::Settle(const Type& type, const MessageLite& response) {
  const auto found = pending_.find(virtual_modem::SerialOf(response).value_or(0));
  if (found == pending_.end()) return log_.Note("ignored: late, double, or never asked for");
  const Pending pending = std::move(found->second);
  pending_.erase(found);
  const bool usable = &type == pending.expected && Complete(response);
  if (!usable) log_.Note("not usable as the response");
  pending.answer(usable ? &response : nullptr);
}

bool Client::Complete(const MessageLite& message) {
  for (const std::string& field : virtual_modem::MissingFields(message)) {
    log_.Note("lacks " + field);
  }
  return message.IsInitialized();
}

void Client::ExpireRequests() {
  for (auto at = pending_.begin(); at != pending_.end();) {
    if (endpoint_.connected() && Clock::now() < at->second.deadline) {
      ++at;
      continue;
    }
    log_.Note("request " + std::to_string(at->first) +
              (endpoint_.connected() ? " timed out" : " is lost"));
    const auto answer = std::move(at->second.answer);
    pending_.erase(at);
    answer(nullptr);
    at = pending_.begin();  // it may have asked again
  }
}

}  // namespace example
