  $ . "$TESTDIR/setup.sh"
  $ xxd -r -p >stream <<<'06080010011801 07080010ac021801'

  $ inspect decode --delimited Hangup stream
  # message 0 at byte 1, 6 bytes
  platformtype: UNKNOW
  serial: 1
  gsmindex: 1
  # message 1 at byte 8, 7 bytes
  platformtype: UNKNOW
  serial: 300
  gsmindex: 1
  $ base64 stream | inspect decode --delimited --from base64 Hangup | grep '^#'
  # message 0 at byte 1, 6 bytes
  # message 1 at byte 8, 7 bytes

Of any size, and shown as soon as it is there:

  $ for size in 120 16300 300000; do
  >   (printf 'platformtype: QCOM serial: 1 parm: "'; head -c $size /dev/zero | tr '\0' a; echo '"') |
  >     inspect encode --delimited StringParmRequest
  > done >sizes
  $ inspect decode --delimited StringParmRequest sizes | grep '#'
  # message 0 at byte 1, 126 bytes
  # message 1 at byte 129, 16307 bytes
  # message 2 at byte 16439, 300008 bytes
  $ mkfifo in out && { inspect decode --delimited Hangup in >out & } 2>/dev/null
  $ exec 5<out 4>in
  $ head -c 7 stream >&4; head -n 1 <&5
  # message 0 at byte 1, 6 bytes
  $ exec 4>&- 5<&-

A message that a receiver refuses does not end the stream, but is told at the end:

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

  $ head -c 10 stream | inspect decode --delimited Hangup | tail -n 4
  virtual-modem-inspect: standard input: the stream ends within message 1
  # message 1 at byte 8, 7 bytes
  platformtype: UNKNOW
  # missing required serial
  # missing required gsmindex
  $ for bytes in '\377\377\377\377\377\377' '\377\377\377\377\001'; do printf "$bytes" | inspect decode --delimited Hangup; done
  virtual-modem-inspect: standard input: no length of a message at byte 0 (is this a stream of delimited messages?)
  virtual-modem-inspect: standard input: no length of a message at byte 0 (is this a stream of delimited messages?)
  [1]
