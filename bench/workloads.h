// The values that the benchmark sends: plausible content for each of its messages.
#pragma once

#include "records.h"

namespace virtual_modem::bench {

NoResultResponseRecord MakeNoResult();
DialRecord MakeDial();
GetCurrentCallsResponseRecord MakeCurrentCalls();
SignalStrengthChangedRecord MakeSignalChanged();
SlaveSetupDataCallResponseRecord MakeSetupDataCall();
IccCardStatusResponseRecord MakeCardStatus();
ImsCallStateChangedRecord MakeImsCalls();

// Calls use(name, record) for each message.
template <typename Use>
void ForEachMessage(const Use& use) {
  use("NoResultResponse", MakeNoResult());
  use("Dial", MakeDial());
  use("GetCurrentCallsResponse", MakeCurrentCalls());
  use("SignalStrengthChanged", MakeSignalChanged());
  use("SlaveSetupDataCallResponse", MakeSetupDataCall());
  use("IccCardStatusResponse", MakeCardStatus());
  use("ImsCallStateChanged", MakeImsCalls());
}

}  // namespace virtual_modem::bench
