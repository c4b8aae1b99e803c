// Joins responses to requests by their serial, in bounded memory.
#pragma once

#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <string>
#include <unordered_map>

#include "inspect/read/traffic.h"

namespace virtual_modem::inspect {

// A request or a response, as far as pairs need it.
struct Half {
  std::int64_t number = 0;  // of the packet or line
  std::int64_t time = 0;
  std::string time_text;  // as it is shown
  std::string type;
  std::string error;
  std::int32_t serial = 0;
  Direction direction = Direction::kToModem;
  bool wanted = true;  // passes the filters
};

enum class PairKind : std::uint8_t { kAnswered, kUnanswered, kAnsweredAgain, kUnasked, kKinds };

class Pairing {
 public:
  // Told of each pair once it is known: a response with its request, a request that nothing
  // answered, a further response to a request, a response that no request was for.
  using Report = std::function<void(PairKind, const Half* request, const Half* response)>;

  // More requests than limit are not waited for at once: the oldest counts as unanswered.
  explicit Pairing(Report report, std::size_t limit = 1U << 16U)
      : report_(std::move(report)), limit_(limit) {}

  void Request(Half request);
  void Response(const Half& response);
  // Reports what is still unanswered.
  void Finish();

 private:
  using Key = std::uint64_t;  // serial and side of the request

  static Key KeyOf(std::int32_t serial, Direction direction);
  void GiveUp(std::map<std::int64_t, Half>::iterator request);

  Report report_;
  const std::size_t limit_;
  std::map<std::int64_t, Half> waiting_;  // by number
  std::unordered_map<Key, std::int64_t> waiting_by_key_;
  std::unordered_map<Key, Half> answered_;
  std::deque<std::pair<Key, std::int64_t>>
      answered_order_;  // with the number, to forget the oldest
};

}  // namespace virtual_modem::inspect
