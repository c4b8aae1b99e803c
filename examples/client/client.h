// The side that sends requests: serials, timeouts, late and duplicate responses. One thread;
// callbacks may send requests, but not wait.
#pragma once

#include <virtual_modem/radio.pb.h>

#include <chrono>
#include <cstdint>
#include <functional>
#include <map>
#include <utility>

#include "client/endpoint.h"

namespace example {

class Client {
 public:
  // Called with the response; null if no usable one arrived in time.
  template <typename Response>
  using Answer = std::function<void(const Response* response)>;
  // Called with a message that answers no request of ours. It may lack required fields.
  using News = std::function<void(Operation operation, const MessageLite& message)>;

  Client(Endpoint& endpoint, Log& log, std::chrono::milliseconds timeout,
         std::int32_t first_serial = 1)
      : endpoint_(endpoint), log_(log), timeout_(timeout), next_serial_(first_serial) {}

  void OnNews(News news) { news_ = std::move(news); }

  // Sends a request. answer() is called once: by Run(), or at once when it cannot be sent.
  template <typename Response, typename Request>
  void Ask(Request request, Operation operation, Answer<Response> answer) {
    request.set_platformtype(QCOM);
    request.set_serial(NextSerial());
    if (!endpoint_.Send(request, operation)) return answer(nullptr);
    pending_[request.serial()] = {&virtual_modem::TypeOf<Response>(), Clock::now() + timeout_,
                                  [answer = std::move(answer)](const MessageLite* response) {
                                    answer(static_cast<const Response*>(response));
                                  }};
  }

  // Handles incoming messages until done(), the connection is lost or the time is up. False unless
  // done().
  bool Run(const std::function<bool()>& done, Clock::time_point until = Clock::time_point::max());

  // Whether every required field is there, at every depth; logs which ones are not.
  bool Complete(const MessageLite& message);

 private:
  struct Pending {
    const Type* expected;
    Clock::time_point deadline;
    Answer<MessageLite> answer;
  };

  std::int32_t NextSerial();
  void Settle(const Type& type, const MessageLite& response);
  void ExpireRequests();

  Endpoint& endpoint_;
  Log& log_;
  const std::chrono::milliseconds timeout_;
  std::int32_t next_serial_;
  std::map<std::int32_t, Pending> pending_;
  News news_;
};

}  // namespace example
