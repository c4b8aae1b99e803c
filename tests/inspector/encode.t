  $ . "$TESTDIR/setup.sh"

Text and JSON give the same bytes, in any form:

  $ echo 'platformtype: UNKNOW serial: 42 gsmindex: 1' >hangup.txt
  $ inspect encode Hangup hangup.txt --to hex
  0800102a1801
  $ script -qec "'$INSPECT' encode Hangup hangup.txt" /dev/null </dev/null | cat -A
  0800102a1801^M$
  $ inspect decode --json IccCardStatusResponse card.bin | inspect encode --json IccCardStatusResponse | cmp - card.bin

What a receiver would not take as meant is refused, and nothing is written:

  $ echo 'platformtype: UNKNOW' | inspect encode Hangup >out; wc -c <out
  # missing required serial
  # missing required gsmindex
  virtual-modem-inspect: standard input: not a valid Hangup (required fields missing: 2); --partial writes it anyway
  0
  $ for partial in '' --partial; do echo '{"platformtype": 9, "serial": 1, "gsmindex": 2}' | inspect encode --json $partial --to hex Hangup 2>/dev/null; done
  080910011802
So is what cannot be read, in one line whatever it holds:

  $ for text in 'nosuch: 1' 'platformtype: 9' $'serial: "\e[31m"'; do
  >   echo "$text" | inspect encode Hangup
  > done
  virtual-modem-inspect: standard input: line 1, column 7: Message type "Hangup" has no field named "nosuch".
  virtual-modem-inspect: standard input: line 2, column 1: Unknown enumeration value of "9" for field "platformtype".
  virtual-modem-inspect: standard input: line 1, column 9: Expected integer, got: "\x1b[31m"
  [1]
  $ for text in 'serial: 1' "$(printf '{"serial":%.0s' {1..200})"; do
  >   echo "$text" | inspect encode --json Hangup
  > done
  virtual-modem-inspect: standard input: JSON: Unexpected token, near: serial: 1
  virtual-modem-inspect: standard input: JSON: Message too deep. Max recursion depth reached for key 'serial'
  [1]

A message to begin with, for every type:

  $ inspect encode --skeleton Dial
  platformtype: UNKNOW  # UNKNOW, QCOM, MTK
  serial: 0  # int32
  address: ""  # string
  clir: CLIR_DEFAULT  # CLIR_DEFAULT, CLIR_INVOCATION, CLIR_SUPPRESSION
  # uusinfo: repeated UusInfo
  $ for type in IccCardStatusResponse GetCurrentCallsResponse QImsCall virtualdata.proto.SlaveMasterShareDataChange; do
  >   inspect encode --skeleton $type | inspect encode $type >/dev/null || echo $type
  > done

Into a capture, in the direction of its kind:

  $ inspect encode --capture hangup.pcap Hangup hangup.txt && inspect log hangup.pcap | sed 's/.*\([<>] H\)/way \1/'
  way > Hangup #42 6 B platformtype: UNKNOW serial: 42 gsmindex: 1
  $ inspect encode --capture card.pcap IccCardStatusResponse card.txt && inspect log card.pcap | cut -c 23-54
  < IccCardStatusResponse #7 105 B
  $ for size in 65427 65428; do
  >   inspect encode --capture card.pcap StringParmRequest <(echo "platformtype: QCOM serial: 1 parm: \"$(head -c $size /dev/zero | tr '\0' a)\"")
  > done
  virtual-modem-inspect: card.pcap: a message of 65436 bytes does not fit a datagram
  [1]
  $ time=$(inspect log --json hangup.pcap | sed 's/.*"time":"\([^"]*\).*/\1/')
  $ echo $((($(date +%s) - $(date -d "$time" +%s)) / 600))
  0
