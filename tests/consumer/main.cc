// What a caller does first: fill a message, send its bytes, read them back.
#include <virtual_modem/conference.pb.h>

int main() {
  ConferenceCapability sent;
  sent.set_devicetype(COMSUMER);
  sent.set_value2(-1);
  sent.set_flag3(true);
  ConferenceCapability received;
  const bool parsed = received.ParseFromString(sent.SerializeAsString());
  return parsed && received.devicetype() == COMSUMER && received.value2() == -1 ? 0 : 1;
}
