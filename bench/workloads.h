// The values that the benchmark sends: plausible content for each of its messages.
#pragma once

#include "records.h"

namespace virtual_modem::bench {

NoResultRecord MakeNoResult();
DialRecord MakeDial(std::size_t digits = 14);
CurrentCallsRecord MakeCurrentCalls(int calls = 3);
SignalChangedRecord MakeSignalChanged();
SetupDataCallRecord MakeSetupDataCall();
CardStatusRecord MakeCardStatus();
ImsCallsRecord MakeImsCalls();

}  // namespace virtual_modem::bench
