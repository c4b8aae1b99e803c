// Bad input: the one kind of failure that the program reports and ends with status 1 for.
#pragma once

#include <stdexcept>

namespace virtual_modem::inspect {

// what() is one line for people, without the program's name and without a full stop.
class Error : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

}  // namespace virtual_modem::inspect
