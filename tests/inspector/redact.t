  $ . "$TESTDIR/setup.sh"

Masked are strings and numbers, at any depth; left out is what nobody knows:

  $ inspect decode --redact IccCardStatusResponse card.bin | grep -e atr -e iccid
    atr: "3b9f96801f"
    iccid: "XXXXXXXXXXXXXXXXXXX"
  $ echo '0801 1003 1a00 2801 2864 2885e6ffffffffffff01 c23e03414243' | inspect decode --redact --trust-type --json CdmaSmsAddress 2>/dev/null
  {
   "digitmode": "DIGIT_MODE_EIGHT_BIT",
   "isnumbermodedatanetwork": true,
   "digits": [
    0,
    0,
    0
   ]
  }
  [1]
  $ echo '0800 1001 120133 120134 12021a00' | inspect decode --redact --trust-type CallAdditionalInfoInd 2>/dev/null
  platformtype: UNKNOW
  callinfotype: RADIO_MT_CALL_REJECTED
  # callinfotype: declared as enum, came as length-delimited; kept as unknown field 2 (byte 4)
  # callinfotype: declared as enum, came as length-delimited; kept as unknown field 2 (byte 7)
  # callinfotype: declared as enum, came as length-delimited; kept as unknown field 2 (byte 10)

Masks go by the type. What does not fit it may be another one, so nothing of it is shown:

  $ echo 080010011a063535313132322000 | inspect decode --redact EmergencyNumber
  # not shown, as it does not fit the type: required fields missing: 3, wrong wire types: 2
  virtual-modem-inspect: standard input: not shown, as it does not fit EmergencyNumber (required fields missing: 3, wrong wire types: 2); --trust-type masks it all the same, and shows what is another type's
  [1]
  $ echo 080010011a063535313132322000 | inspect decode --redact --json EmergencyNumber
  # not shown, as it does not fit the type: required fields missing: 3, wrong wire types: 2
  virtual-modem-inspect: standard input: not shown, as it does not fit EmergencyNumber (required fields missing: 3, wrong wire types: 2); --trust-type masks it all the same, and shows what is another type's
  [1]
  $ echo 0801 1005 1801 2a03353535 | inspect decode --redact Hangup
  # not shown, as it does not fit the type: unknown fields: 1
  virtual-modem-inspect: standard input: not shown, as it does not fit Hangup (unknown fields: 1); --trust-type masks it all the same, and shows what is another type's
  [1]
  $ (printf '\x0e'; echo 080010011a063535313132322000 | xxd -r -p; inspect encode --delimited Hangup <(echo 'platformtype: QCOM serial: 5551122 gsmindex: 1')) >stream
  $ inspect decode --redact --delimited Hangup stream
  # message 0 at byte 1, 14 bytes
  # not shown, as it does not fit the type: required fields missing: 1, wrong wire types: 1, unknown fields: 1
  # message 1 at byte 16, 9 bytes
  platformtype: QCOM
  serial: 5551122
  gsmindex: 1
  virtual-modem-inspect: stream: 1 of 2 messages are not shown, as they do not fit Hangup
  [1]
  $ inspect decode --redact --delimited --json Hangup stream
  # message 0 at byte 1, 14 bytes
  # not shown, as it does not fit the type: required fields missing: 1, wrong wire types: 1, unknown fields: 1
  {"platformtype":"QCOM","serial":5551122,"gsmindex":1}
  virtual-modem-inspect: stream: 1 of 2 messages are not shown, as they do not fit Hangup
  [1]
  $ inspect decode --trust-type Hangup stream
  virtual-modem-inspect: --trust-type requires --redact (see --help)
  [2]

Without the list there is no masking by mistake, and an entry that names no field is an error:

  $ mkdir data && cp "$BUILD"/share/virtual-modem-protos/*.binpb data
  $ inspect decode --redact --schema data/virtual-modem-protos.binpb IccCardStatusResponse card.bin
  virtual-modem-inspect: there is no subscriber_data.txt beside the descriptor set: nothing can be masked
  [1]
  $ echo 'Dial.nosuch # gone' >data/subscriber_data.txt
  $ inspect list --schema data/virtual-modem-protos.binpb
  virtual-modem-inspect: data/subscriber_data.txt line 1: no field is named Dial.nosuch
  [1]
