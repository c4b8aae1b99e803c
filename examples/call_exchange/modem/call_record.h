// What Call and QImsCall records have in common: their first twelve fields.
#pragma once

#include <algorithm>
#include <string>

namespace example {

// One active and one held (TS 22.083), one of them a multiparty call of up to five (TS 22.084), and
// one that waits.
inline constexpr int kMaxCalls = 7;
inline constexpr int kUnknownNumber = 129;  // type of address, TS 24.008 10.5.4.7
inline constexpr int kInternationalNumber = 145;

// The lowest index, from 1, that no call in `calls` has.
template <typename Calls>
int FreeIndex(const Calls& calls) {
  int index = 1;
  const auto taken = [&index](const auto& call) { return call.index() == index; };
  while (std::any_of(calls.begin(), calls.end(), taken)) ++index;
  return index;
}

// False when there is no call of that index.
template <typename Calls>
bool Remove(Calls& calls, int index) {
  const auto found = std::find_if(calls.begin(), calls.end(),
                                  [index](const auto& call) { return call.index() == index; });
  if (found == calls.end()) return false;
  calls.erase(found);
  return true;
}

// Fills everything but the state.
template <typename Record>
void FillOutgoing(Record& call, int index, const std::string& number) {
  call.set_index(index);
  call.set_toa(number[0] == '+' ? kInternationalNumber : kUnknownNumber);
  call.set_ismpty(false);
  call.set_ismt(false);
  call.set_als(false);
  call.set_isvoice(true);
  call.set_isvoiceprivacy(false);
  call.set_number(number);
  call.set_numberpresentation(0);  // may be shown
  call.set_name("");
  call.set_namepresentation(0);
}

}  // namespace example
