"""Sends a Dial and reads what comes back, in Python. See README.md."""

import virtual_modem
from google.protobuf.message import EncodeError
from virtual_modem import radio_pb2 as radio

# The telephony side fills a request. Its text, for logs, masks subscriber data.
dial = radio.Dial(
    platformtype=radio.QCOM, serial=7, address="+15551234567", clir=radio.CLIR_DEFAULT
)
request = dial.SerializeToString()
print("request  ", request.hex())
print("log      ", virtual_modem.to_text(dial))

# The modem side has the class by the name that the channel carries beside the bytes. It answers with
# the serial of the request.
received = virtual_modem.TYPES["Dial"].FromString(request)
response = radio.NoResultResponse(
    platformtype=received.platformtype, serial=received.serial, error=radio.RADIO_E_SUCCESS
).SerializeToString()
print("response ", response.hex())
print("error    ", radio.Radio_Errno.Name(radio.NoResultResponse.FromString(response).error))

# Field 4 holds 99, which Clir does not declare: the field stays absent and the number is kept as an
# unknown field, so that it is written back. The message lacks a required field, by name.
newer = radio.Dial.FromString(bytes.fromhex("08011007" + "1a0131" + "2063"))
print("clir set ", newer.HasField("clir"))
print("missing  ", newer.FindInitializationErrors())
print("partial  ", newer.SerializePartialToString().hex())
try:
    newer.SerializeToString()
except EncodeError as error:
    print("refused  ", error)
