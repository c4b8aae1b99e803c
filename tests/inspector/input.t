  $ . "$TESTDIR/setup.sh"
  $ same() { inspect decode IccCardStatusResponse "$@" | diff card.txt - && echo same; }

Every form that the common tools write is found out:

  $ od -An -v -tx1 card.bin | same
  same
  $ od -v -tx1 card.bin | same
  same
  $ od -v -Ax -tx1z card.bin | sed 's/>.*//' | same
  same
  $ base64 card.bin | same
  same
  $ base64 -w0 card.bin | tr '+/' '-_' | same
  same
  $ inspect encode --to hex IccCardStatusResponse card.txt | tee card.hex | same
  same
  $ tr a-f A-F <card.hex | same
  same
  $ sed 's/../\\x&/g' card.hex | same
  same
  $ sed 's/../0x&, /g; s/^/{/; s/$/};/' card.hex | same
  same
  $ sed 's/../&:/g' card.hex | same
  same

Dumps with the characters at the right, which may look like hex, and such as begin elsewhere:

  $ cat >dump <<'DUMP'
  > 00000040: 0800 102a 1803                           abcdef 12
  > DUMP
  $ inspect decode Hangup dump
  platformtype: UNKNOW
  serial: 42
  gsmindex: 3
  $ echo '00000000  08 00 10 2a 18 03  |abc*..|' | inspect decode Hangup
  platformtype: UNKNOW
  serial: 42
  gsmindex: 3
  $ printf '0000   08 00 10 2a   ab\n0004   18 03   cd\n' | inspect decode Hangup
  platformtype: UNKNOW
  serial: 42
  gsmindex: 3

An offset that does not go on is no offset, and a line left out is an error:

  $ printf '0000: 08 00 10 2a\n0008: 18 03\n' | inspect decode Hangup 2>&1 | tail -n 1
  virtual-modem-inspect: standard input: not a valid Hangup (malformed, required fields missing: 3)
  $ printf '00000000  08 00 10 2a\n*\n00000020\n' | inspect decode Hangup --from hex
  virtual-modem-inspect: standard input: not hex: line 2, column 1: repeated lines were left out of the dump; hexdump -v keeps them
  [1]

Text that happens to be a message has to be told to be one:

  $ printf '\n\001a' | inspect decode ConferenceParticipant 2>&1 | head -n 1
  participants {
  $ printf '\n  !!!!!!!!!!!!!!!!!!!!!!!!!!!!!!!!' >text
  $ inspect decode ConferenceParticipant text
  virtual-modem-inspect: text: text that is neither hex (line 2, column 3) nor base64; if it is the message itself, say --from binary
  [1]
  $ inspect decode --from binary ConferenceParticipant text 2>&1 | tail -n 1
  virtual-modem-inspect: text: not a valid ConferenceParticipant (malformed, wrong wire types: 3)
  $ inspect decode --from base64 Hangup text
  virtual-modem-inspect: text: not base64
  [1]
  $ echo '{}' | inspect decode --from hex Hangup
  virtual-modem-inspect: standard input: not hex: no digits
  [1]
  $ echo 080 | inspect decode --from hex Hangup
  virtual-modem-inspect: standard input: not hex: line 1, column 3
  [1]

Bytes of a string are shown in text and replaced in JSON:

  $ printf '\x08\x00\x10\x05\x1a\x04\xff\xfe12\x20\x01' >dial.bin
  $ inspect decode Dial dial.bin
  platformtype: UNKNOW
  serial: 5
  address: "\377\37612"
  clir: CLIR_INVOCATION
  $ inspect decode --json Dial dial.bin
  {
   "platformtype": "UNKNOW",
   "serial": 5,
   "address": "??12",
   "clir": "CLIR_INVOCATION"
  }
  # Dial.address: not UTF-8; "?" stands for each byte that is not (the text output shows them)
