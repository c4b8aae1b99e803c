  $ . "$TESTDIR/setup.sh"
  $ for serial in 1 300; do
  >   echo "platformtype: UNKNOW serial: $serial gsmindex: 1" | inspect encode --delimited Hangup
  > done >stream

  $ inspect decode --delimited Hangup stream
  # message 0 at byte 1, 6 bytes
  platformtype: UNKNOW
  serial: 1
  gsmindex: 1
  # message 1 at byte 8, 7 bytes
  platformtype: UNKNOW
  serial: 300
  gsmindex: 1
  $ inspect decode --delimited --json Hangup <stream
  {"platformtype":"UNKNOW","serial":1,"gsmindex":1}
  {"platformtype":"UNKNOW","serial":300,"gsmindex":1}
  $ base64 stream | inspect decode --delimited --from base64 Hangup | grep '^#'
  # message 0 at byte 1, 6 bytes
  # message 1 at byte 8, 7 bytes

A message that a receiver refuses does not end the stream, but is told at the end:

  $ (cat stream; printf '\002\010\000'; cat stream) | inspect decode --delimited Hangup 2>&1 | grep -v :
  # message 0 at byte 1, 6 bytes
  # message 1 at byte 8, 7 bytes
  # message 2 at byte 16, 2 bytes
  # missing required serial
  # missing required gsmindex
  # message 3 at byte 19, 6 bytes
  # message 4 at byte 26, 7 bytes
  $ (printf '\002\010\000'; cat stream) | inspect decode --delimited --json Hangup
  {"platformtype":"UNKNOW"}
  # message 0 at byte 1, 2 bytes
  # missing required serial
  # missing required gsmindex
  {"platformtype":"UNKNOW","serial":1,"gsmindex":1}
  {"platformtype":"UNKNOW","serial":300,"gsmindex":1}
  virtual-modem-inspect: standard input: 1 of 3 messages are malformed or incomplete
  [1]

A stream that ends early, and what is none:

  $ head -c 10 stream | inspect decode --delimited Hangup
  # message 0 at byte 1, 6 bytes
  platformtype: UNKNOW
  serial: 1
  gsmindex: 1
  # message 1 at byte 8, 7 bytes
  platformtype: UNKNOW
  # missing required serial
  # missing required gsmindex
  virtual-modem-inspect: standard input: the stream ends within message 1
  [1]
  $ printf '\377\377\377\377\377\377' | inspect decode --delimited Hangup
  virtual-modem-inspect: standard input: no length of a message at byte 0 (is this a stream of delimited messages?)
  [1]
  $ printf '\377\377\377\377\001' | inspect decode --delimited Hangup
  virtual-modem-inspect: standard input: no length of a message at byte 0 (is this a stream of delimited messages?)
  [1]
  $ inspect decode --delimited Hangup /nonexistent
  virtual-modem-inspect: /nonexistent: No such file or directory
  [1]
  $ inspect decode --delimited Hangup .
  virtual-modem-inspect: .: Is a directory
  [1]
