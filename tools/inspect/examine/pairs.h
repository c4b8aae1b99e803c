// Joins responses to requests by their serial, in bounded memory.
#pragma once

#include <cstdint>
#include <deque>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>

#include "inspect/examine/glance.h"
#include "inspect/read/recording.h"

namespace virtual_modem::inspect {

// A request or a response, as far as pairs need it.
struct Half {
  std::int64_t time = kNoTime;
  std::string time_text;  // as it is shown, empty until it is set
  std::string type;
  std::string error;
  std::int32_t serial = 0;
  Direction direction = Direction::kToModem;
  bool wanted = true;  // passes the filters
};

Half MakeHalf(const Record& record, const Glance& glance, bool wanted);

// How long the response took, in nanoseconds; nothing when a time is missing, and when they make no
// sense: the response came before the request, or more than a day after it.
std::optional<std::int64_t> Latency(const Half& request, const Half& response);

// A response with its request, a request that nothing answered, a further response to a request, a
// response that no request was for.
enum class PairKind : std::uint8_t { kAnswered, kUnanswered, kAnsweredAgain, kUnasked, kKinds };

// Such as "no response", empty for kAnswered.
const char* Problem(PairKind kind);

class Pairing {
 public:
  // Told of each pair once it is known; what it has not is null.
  using Report = std::function<void(PairKind, const Half* request, const Half* response)>;

  // Remembers as many requests as limit: one that is still waiting then counts as unanswered.
  explicit Pairing(Report report, std::size_t limit = 1U << 16U)
      : report_(std::move(report)), limit_(limit) {}

  // Takes a request or a response; messages of other kinds belong to no pair.
  void Take(std::string_view kind, Half half);
  // Reports what is still unanswered.
  void Finish();

 private:
  using Key = std::uint64_t;  // serial and side of the request
  struct Request {
    Half half;
    std::int64_t number;  // among all requests
    bool answered = false;
  };

  void Forget(Key key, std::int64_t number);

  Report report_;
  const std::size_t limit_;
  std::int64_t taken_ = 0;
  std::unordered_map<Key, Request> requests_;
  std::deque<std::pair<Key, std::int64_t>> order_;  // the oldest first, with its number
};

}  // namespace virtual_modem::inspect
