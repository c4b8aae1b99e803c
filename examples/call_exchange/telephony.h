// The telephony side: scenarios, step by step; each step waits for its result.
#pragma once

#include <virtual_modem/radio.pb.h>

#include <array>
#include <chrono>
#include <deque>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "client/client.h"

namespace example {

class Telephony {
 public:
  Telephony(Endpoint& endpoint, Log& log, std::chrono::milliseconds timeout);

  void Send(const MessageLite& message) { endpoint_.Send(message); }
  void Note(const std::string& text) { log_.Note(text); }

  // The next message that answers no request, which must be an M, and complete unless `partial`.
  // Throws std::runtime_error otherwise, as do the functions below.
  template <typename M>
  M Expect(bool partial = false) {
    const auto message = Next();
    const M* expected = virtual_modem::As<M>(*message);
    Require(expected != nullptr,
            "awaited " + M::default_instance().GetTypeName() + ", got " + message->GetTypeName());
    Require(partial || expected->IsInitialized(),
            "the " + message->GetTypeName() + " received lacks a required field");
    return *expected;
  }

  // Sends the request and returns the response to it. The outcome must be `expected`.
  template <typename Response, typename Request>
  Response Ask(const Request& request, Operation operation = Operation::kByType,
               Radio_Errno expected = RADIO_E_SUCCESS) {
    std::optional<Response> result;
    bool answered = false;
    client_.Ask<Response>(request, operation, [&](const Response* response) {
      answered = true;
      if (response != nullptr) result = *response;
    });
    client_.Run([&answered] { return answered; });
    Require(result.has_value(), "no usable answer to " + request.GetTypeName());
    Require(result->error() == expected,
            request.GetTypeName() + " ended with " + Radio_Errno_Name(result->error()));
    return *result;
  }

  // The same for an operation without parameters.
  template <typename Response>
  Response Ask(Operation operation) {
    return Ask<Response>(NoParmRequest(), operation);
  }

  void Require(bool met, const std::string& what_is_wrong) const;

 private:
  std::unique_ptr<MessageLite> Next();

  Endpoint& endpoint_;
  Log& log_;
  const std::chrono::milliseconds timeout_;
  Client client_;
  std::deque<std::unique_ptr<MessageLite>> news_;
};

struct Scenario {
  std::string_view name;
  std::string_view what;
  void (*play)(Telephony& telephony);  // throws std::runtime_error
};
extern const std::array<Scenario, 5> kScenarios;

}  // namespace example
