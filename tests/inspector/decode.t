  $ . "$TESTDIR/setup.sh"

A whole message comes back as it was written, and nothing is said about it:

  $ inspect decode IccCardStatusResponse card.bin | diff card.txt -

A message that is cut shows what was read, where it breaks and what is missing:

  $ head -c 60 card.bin | inspect decode IccCardStatusResponse 2>&1 | tail -n 9
  }
  # malformed at byte 60 in cardstatus.base.applications[0]: the input ends 10 bytes early
  # missing required cardstatus.base.applications[0].applabel
  # missing required cardstatus.base.applications[0].pin1
  # missing required cardstatus.base.applications[0].pin2
  # missing required cardstatus.physicalslotid
  # missing required cardstatus.atr
  # missing required cardstatus.iccid
  virtual-modem-inspect: standard input: not a valid IccCardStatusResponse (malformed, required fields missing: 6)
A cut inside a string, a varint, a tag, a length:

  $ for size in 85 51 16 3; do
  >   head -c $size card.bin | inspect decode IccCardStatusResponse 2>&1 | grep 'malformed at'
  > done
  # malformed at byte 85 in cardstatus.iccid: the input ends inside a length
  # malformed at byte 46 in cardstatus.base.applications[0].aid: 14 bytes announced, 5 left before the end of the input
  # malformed at byte 16 in cardstatus.base: the input ends 54 bytes early
  # malformed at byte 3 in serial: the input ends inside a varint

Numbers that are not declared:

  $ echo 0800 1005 1800 2063 | inspect decode GetVoiceRadioTechResponse
  platformtype: UNKNOW
  serial: 5
  error: RADIO_E_SUCCESS
  4: 99
  # rat: 99 is not a Technology; kept as unknown field 4 (byte 6)
  # missing required rat
  virtual-modem-inspect: standard input: not a valid GetVoiceRadioTechResponse (required fields missing: 1, undeclared values: 1)
  [1]
  $ echo 0800 1005 1800 2063 | inspect decode --json GetVoiceRadioTechResponse 2>/dev/null | grep rat
   "rat": 99

Set again with a number that is declared, the field is there; the first number is kept aside:

  $ echo 0800 1005 1800 2063 2003 | inspect decode GetVoiceRadioTechResponse | tail -n 1
  # rat: 99 is not a Technology; kept as unknown field 4 (byte 6)

In a list of messages the place is told; the status of what a receiver accepts is 0:

  $ echo '0800 1801 1001 2200 22 04 0863 5001' | inspect decode GetCurrentCallsResponse 2>&1 | grep '#.*not'
  # calls[1].state: 99 is not a RadioCallState; kept as unknown field 1 (byte 10)

Unknown fields of every wire type:

  $ echo '0800 1005 1a0131 2001 4801 51 0102030405060708 5a0161 63586464 6d01020304' | inspect decode Dial | tail -n +5
  9: 1
  10: 0x0807060504030201
  11: "a"
  12 {
    11: 100
  }
  13: 0x04030201
  # unknown field 9 at byte 9, varint, 2 bytes with its tag
  # unknown field 10 at byte 11, 64-bit, 9 bytes with its tag
  # unknown field 11 at byte 20, length-delimited, 3 bytes with its tag
  # unknown field 12 at byte 23, group, 4 bytes with its tag
  # unknown field 13 at byte 27, 32-bit, 5 bytes with its tag

Unknown bytes that read as a message are printed as one, down to the tenth:

  $ nested() { if [ $1 -gt 0 ]; then printf '7a%02x%s' $((2 * $1)) "$(nested $(($1 - 1)))"; else echo 0801; fi; }
  $ for depth in 10 11; do echo "0801 1003 1801 $(nested $depth)" | inspect decode Hangup | grep ': "\|1: 1'; done
                      1: 1
                      15: "\010\001"
  $ echo 0801 1003 1801 7a10 090102030405060708 0b0d010203040c | inspect decode Hangup | sed -n 4,7p
  15 {
    1: 0x0807060504030201
    1 {
      1: 0x04030201
  $ for bytes in 0b14 0c01 0001 0601 0901 0d01; do echo "0801 1003 1801 7a02$bytes" | inspect decode Hangup | sed -n 4p; done
  15: "\013\024"
  15: "\014\001"
  15: "\000\001"
  15: "\006\001"
  15: "\t\001"
  15: "\r\001"

Declared fields with a wrong wire type:

  $ echo '0801 10 05 1a0131 2a00 22 0131' | inspect decode Dial | tail -n 4
  virtual-modem-inspect: standard input: not a valid Dial (required fields missing: 1, wrong wire types: 1)
  }
  4: "1"
  # clir: declared as enum, came as length-delimited; kept as unknown field 4 (byte 9)
  # missing required clir

What cannot be:

  $ for bytes in 00 0807 0b 0c 0e 08808080808080808080808001 ffffffffff7f 1affffffff7f; do
  >   echo "$bytes" | inspect decode Dial 2>&1 | grep 'malformed at'
  > done
  # malformed at byte 0: a field has number 0
  # malformed at byte 1 in platformtype: the input ends inside a group
  # malformed at byte 0 in platformtype: a group ends that was not begun
  # malformed at byte 0 in platformtype: there is no wire type 6
  # malformed at byte 1 in platformtype: a varint is longer than 10 bytes
  # malformed at byte 0: a tag is longer than 5 bytes
  # malformed at byte 1 in address: a length is over 2 GiB

Negative numbers take ten bytes; those of an enumeration and of a list too:

  $ echo '0801 10feffffffffffffffff01 18ffffffff0f' | inspect decode Hangup | tail -n 2
  serial: -2
  gsmindex: -1

Of many findings the first hundred are told, all are counted, and the last one never gets lost:

  $ (printf '080110011801'; printf '4801%.0s' {1..101}; printf 10) | inspect decode Hangup 2>&1 | tail -n 3
  # malformed at byte 209 in serial: the input ends inside a varint
  # only the first 100 findings are shown
  virtual-modem-inspect: standard input: not a valid Hangup (malformed, unknown fields: 101)
  $ (printf '080010011800'; printf '2200%.0s' {1..12}) | inspect decode GetCurrentCallsResponse 2>&1 | tail -n 3
  # missing required calls[8].ismpty
  # only the first 100 findings are shown
  virtual-modem-inspect: standard input: not a valid GetCurrentCallsResponse (required fields missing: 144)

The limits of a receiver are those of the inspector:

  $ groups() { printf '080110011801'; printf '4b%.0s' $(seq $1); printf '4c%.0s' $(seq $1); }
  $ for depth in 100 101; do groups $depth | inspect decode Hangup 2>&1 | tail -n 1; done
  # unknown field 9 at byte 6, group, 200 bytes with its tag
  virtual-modem-inspect: standard input: not a valid Hangup (malformed)

Fields out of order, twice and packed are printed as a receiver has them:

  $ echo '1801 1002 0800 1803 20 00' | inspect decode Hangup | sed -n '2,4p'
  serial: 2
  gsmindex: 3
  4: 0
  $ echo '0801 1801 2a03 010203 2801 2001 1001' | inspect decode --json --redact CdmaSmsAddress | tr -d '\n '
  {"digitmode":"DIGIT_MODE_EIGHT_BIT","isnumbermodedatanetwork":true,"numbertype":"NUMBER_TYPE_INTERNATIONAL_OR_DATA_IP","numberplan":"NUMBER_PLAN_TELEPHONY","digits":[0,0,0,0]} (no-eol)
