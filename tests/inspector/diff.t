  $ . "$TESTDIR/setup.sh"
  $ sed '/atr/d; s/8988/8989/; s/READY/PIN/; s/physicalslotid.*/&  atr: ""/' card.txt |
  >   inspect encode IccCardStatusResponse >other.bin

  $ inspect diff IccCardStatusResponse card.bin card.bin
  $ inspect diff IccCardStatusResponse card.bin other.bin
  modified: cardstatus.base.applications[0].appstate: APPSTATE_READY -> APPSTATE_PIN
  modified: cardstatus.atr: "3b9f96801f" -> ""
  modified: cardstatus.iccid: "8988211000000123456" -> "8989211000000123456"
  [3]
  $ inspect diff --redact IccCardStatusResponse card.bin - <other.bin | tail -n 1
  modified: cardstatus.iccid: (masked) -> (masked)
  $ inspect diff IccCardStatusResponse card.bin <(head -c 40 card.bin)
  virtual-modem-inspect: /dev/fd/63: not a valid IccCardStatusResponse (malformed, required fields missing: 9)
  [1]
An element more, with subscriber data in it, and an unknown field, which only trust in the type shows:

  $ inspect diff --redact Dial <(echo 0800) <(echo 0800) 2>&1 | cut -c 31-60
  /63: not shown, as it does not
  $ inspect diff --redact --trust-type Dial <(echo 0800) <(echo 0800 2a07 08011a03 414243 9a3e03 414243)
  added: 995[0]: (masked)
  added: uusinfo[0]: { uustype: TYPE1_REQUIRED uusdata: "XXX" }
  [3]

Two recordings: their messages are matched by type, direction and serial.

  $ "$TESTDIR/make_capture.py" >left.pcap <<'PACKETS'
  > 1000000000 > Dial 080010011a033131322000
  > 1000000000 > Dial 080010011a033131352000
  > 1000000001 > Hangup 080010021801
  > 1000000002 < NoResultResponse 080010011800
  > 1000000003 > Nonesuch 00
  > PACKETS
  $ "$TESTDIR/make_capture.py" >right.pcap <<'PACKETS'
  > 1000000000 < NoResultResponse 080010011801
  > 1000000001 > Dial 080010011a033131332000
  > 1000000002 > Dial 080010011a033131352000
  > 1000000003 > Nonesuch 01
  > PACKETS
  $ inspect diff left.pcap right.pcap
  # NoResultResponse #1, message 4 and 1
  modified: error: RADIO_E_SUCCESS -> RADIO_E_RADIO_NOT_AVAILABLE
  # Dial #1, message 1 and 2
  modified: address: "112" -> "113"
  # Nonesuch, message 5 and 4
  modified: bytes of a type that the schema does not have
  # only left: Hangup #2, message 3
  [3]
  $ inspect diff --redact left.pcap right.pcap | sed -n 4p
  modified: address: (masked) -> (masked)
  $ inspect diff left.pcap left.pcap

What differs in any way makes the status 3: a message more on either side, the same fields in other
bytes, bytes that do not fit their type; and what is cut is never equal.

  $ compare() { inspect diff "${@:3}" <(echo "$1" | "$TESTDIR/make_capture.py") <(echo "$2" | "$TESTDIR/make_capture.py"); }
  $ compare '1 > Hangup 080010021801' $'1 > Hangup 080010021801\n1 > Hangup 080010031801'
  # only right: Hangup #3, message 2
  [3]
  $ compare '1 > Hangup 080010021801' '1 > Hangup 100208001801'
  # Hangup #2, message 1 and 1
  modified: other bytes of the same fields
  [3]
  $ for trust in '' --trust-type; do compare '1 > Dial 1a0131' '1 > Dial 1a0132' --redact $trust; done
  # Dial, message 1 and 1
  modified: (masked, as the bytes do not fit the type)
  # Dial, message 1 and 1
  modified: address: (masked) -> (masked)
  [3]
  $ compare '1 > Hangup 0800100218' '1 > Hangup 0800100218'
  # Hangup #2, message 1 and 1
  not comparable: cut or malformed
  [3]
  $ compare '1 < Hangup 080010021801' '1 > Hangup 080010021801'
  # only right: Hangup #2, message 1
  # only left: Hangup #2, message 1
  [3]
