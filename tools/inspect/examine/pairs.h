// Joins responses to requests by their serial, in bounded memory.
#pragma once

#include <cstdint>
#include <list>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>

#include "inspect/examine/glance.h"
#include "inspect/read/recording.h"

namespace virtual_modem::inspect {

// A request or a response, as far as pairs need it.
struct Half {
  Half(const Record& record, const Glance& glance, bool passes)
      : time(record.time),
        type(record.name),
        error(glance.error),
        serial(glance.serial.value_or(0)),
        direction(record.direction),
        wanted(passes) {}

  std::int64_t time;
  std::string time_text;  // as it is shown, empty until it is set
  std::string type;
  std::string error;
  std::int32_t serial;
  Direction direction;
  bool wanted;  // passes the filters
};

// How long the response took, in nanoseconds; nothing when a time is missing, and when they make no
// sense: the response came before the request, or more than a day after it.
std::optional<std::int64_t> Latency(const Half& request, const Half& response);

// A response with its request, a request that nothing answered, a further response to a request, a
// response that no request was for.
enum class PairKind : std::uint8_t { kAnswered, kUnanswered, kAnsweredAgain, kUnasked, kKinds };

// Such as "no response", empty for kAnswered.
const char* Problem(PairKind kind);

class Pairing {
 protected:
  // Called for each pair once it is known; what it has not is null.
  virtual void TakePair(PairKind kind, const Half* request, const Half* response) = 0;

  // Takes a request or a response; messages of other kinds belong to no pair.
  void TakeHalf(std::string_view kind, Half half);
  // Tells of what is still unanswered.
  void FinishPairs();
  ~Pairing() = default;

 private:
  using Key = std::uint64_t;  // serial and side of the request
  struct Request {
    Key key;
    Half half;
    bool answered = false;
  };
  using Requests = std::list<Request>;

  void Forget(Requests::iterator request);

  Requests requests_;  // the oldest first
  std::unordered_map<Key, Requests::iterator> by_key_;
};

}  // namespace virtual_modem::inspect
