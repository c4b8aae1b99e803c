#include "call_exchange/telephony.h"

namespace virtual_modem::exchange {

const MessageLite& Telephony::Expect(const MessageLite& prototype, bool partial) {
  const std::string expected = prototype.GetTypeName();
  const auto received = endpoint_.Receive();
  if (!received) throw LinkError("the modem is gone; awaited " + expected);
  if (received->frame.type != expected) {
    throw LinkError("awaited " + expected + ", got " + std::string(received->frame.type));
  }
  if (!partial && !received->message.IsInitialized()) {
    throw LinkError("the " + expected + " received lacks a required field");
  }
  return received->message;
}

void Telephony::CheckAnswer(std::int32_t serial, Radio_Errno error, Radio_Errno expected) const {
  if (serial != serial_) {
    throw LinkError("awaited the answer to #" + std::to_string(serial_) + ", got that to #" +
                    std::to_string(serial));
  }
  if (error != expected) {
    throw LinkError("request #" + std::to_string(serial) + " ended with " +
                    Radio_Errno_Name(error));
  }
}

}  // namespace virtual_modem::exchange
