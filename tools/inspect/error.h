// Errors that the program reports in one line before it ends.
#pragma once

#include <stdexcept>

namespace virtual_modem::inspect {

// Bad input, status 1. what() is one line for people, without the program's name and without a full
// stop.
class Error : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// A wrong command line, status 2.
class UsageError : public Error {
 public:
  using Error::Error;
};

}  // namespace virtual_modem::inspect
