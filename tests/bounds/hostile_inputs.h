// Inputs that cost a receiver as much as possible for the bytes that they are long.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "support/schema.h"

namespace virtual_modem::testing {

// A kind of input of any length: the same bytes over and over, in a field or sub-message.
class HostileInput {
 public:
  HostileInput(std::string what, std::string repeated, std::vector<int> way)
      : what_(std::move(what)), repeated_(std::move(repeated)), way_(std::move(way)) {}

  // For people: what is repeated.
  const std::string& what() const { return what_; }

  // As many repetitions as fit into `size` bytes.
  std::string Bytes(std::size_t size) const;

 private:
  std::string what_;
  std::string repeated_;
  std::vector<int> way_;  // length-delimited fields around the repetitions, from the outside
};

// Every way to make a message of that type expensive that its schema gives.
std::vector<HostileInput> HostileInputs(const MessageSchema& schema);

// Every singular field of the message and of its sub-messages once, with the least bytes: what a
// message takes whatever its length.
std::string EveryFieldOnce(const MessageSchema& schema);

// Levels of messages, itself included.
int Depth(const MessageSchema& schema);

}  // namespace virtual_modem::testing
