// What the telephony side asks for when it starts: the card and the signal.
#include "call_exchange/scenarios.h"

namespace example {

void PlayStatus(Telephony& telephony) {
  telephony.Ask<IccCardStatusResponse>(Operation::kCardStatus);
  telephony.Ask<GetSignalStrengthResponse>(Operation::kSignalStrength);
}

}  // namespace example
