  $ . "$TESTDIR/setup.sh"
  $ sed '/atr/d; s/8988/8989/; s/READY/PIN/; s/physicalslotid.*/&  atr: ""/' card.txt |
  >   inspect encode IccCardStatusResponse >other.bin

  $ inspect diff IccCardStatusResponse card.bin card.bin
  $ inspect diff IccCardStatusResponse card.bin other.bin
  modified: cardstatus.base.applications[0].appstate: APPSTATE_READY -> APPSTATE_PIN
  modified: cardstatus.atr: "3b9f96801f" -> ""
  modified: cardstatus.iccid: "8988211000000123456" -> "8989211000000123456"
  [3]
  $ inspect diff --redact IccCardStatusResponse card.bin - <other.bin
  modified: cardstatus.base.applications[0].appstate: APPSTATE_READY -> APPSTATE_PIN
  modified: cardstatus.atr: "3b9f96801f" -> ""
  modified: cardstatus.iccid: (redacted) -> (redacted)
  [3]
  $ inspect diff IccCardStatusResponse card.bin <(head -c 40 card.bin)
  virtual-modem-inspect: /dev/fd/63: not a valid IccCardStatusResponse (malformed, required fields missing: 9)
  [1]
  $ inspect diff IccCardStatusResponse - -
  virtual-modem-inspect: only one side can be read from -
  [1]

An element more, with subscriber data in it, and an unknown field:

  $ inspect diff --redact Dial <(echo 0800) <(echo 0800 2a07 08011a03 414243 9a3e03 414243)
  added: 995[0]: (redacted)
  added: uusinfo[0]: { uustype: TYPE1_REQUIRED uusdata: "XXX" }
  [3]
