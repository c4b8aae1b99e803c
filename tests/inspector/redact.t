  $ . "$TESTDIR/setup.sh"

Masked are strings and numbers, at any depth; left out is what nobody knows:

  $ inspect decode --redact IccCardStatusResponse card.bin | grep -e atr -e iccid
    atr: "3b9f96801f"
    iccid: "XXXXXXXXXXXXXXXXXXX"
  $ echo '0801 1003 1a00 2801 2864 2885e6ffffffffffff01 c23e03414243' | inspect decode --redact --json CdmaSmsAddress 2>/dev/null
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
  $ echo '0800 1001 120133 120134 12021a00' | inspect decode --redact CallAdditionalInfoInd 2>/dev/null
  platformtype: UNKNOW
  callinfotype: RADIO_MT_CALL_REJECTED
  # callinfotype: declared as enum, came as length-delimited; kept as unknown field 2 (byte 4)
  # callinfotype: declared as enum, came as length-delimited; kept as unknown field 2 (byte 7)
  # callinfotype: declared as enum, came as length-delimited; kept as unknown field 2 (byte 10)

Without the list there is no masking by mistake, and an entry that names no field is an error:

  $ mkdir data && cp "$BUILD"/share/virtual-modem-protos/*.binpb data
  $ inspect decode --redact --schema data/virtual-modem-protos.binpb IccCardStatusResponse card.bin
  virtual-modem-inspect: there is no subscriber_data.txt beside the descriptor set: nothing can be redacted
  [1]
  $ echo 'Dial.nosuch # gone' >data/subscriber_data.txt
  $ inspect list --schema data/virtual-modem-protos.binpb
  virtual-modem-inspect: data/subscriber_data.txt line 1: no field is named Dial.nosuch
  [1]
