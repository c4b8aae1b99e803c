// The values that the benchmark sends: plausible content for each of its messages.
#pragma once

#include "records.h"

namespace virtual_modem::bench {

NoResultResponseRecord MakeNoResult();
DialRecord MakeDial(std::size_t digits = 14);
GetCurrentCallsResponseRecord MakeCurrentCalls(int calls = 3);
SignalStrengthChangedRecord MakeSignalChanged();
SlaveSetupDataCallResponseRecord MakeSetupDataCall();
IccCardStatusResponseRecord MakeCardStatus();
ImsCallStateChangedRecord MakeImsCalls();

}  // namespace virtual_modem::bench
