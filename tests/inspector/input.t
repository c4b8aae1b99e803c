  $ . "$TESTDIR/setup.sh"
  $ each() {
  >   : >notes
  >   while read -r command; do
  >     eval "$command" | inspect decode IccCardStatusResponse 2>>notes | cmp -s - card.txt || echo "$command"
  >   done
  > }

Every form that the common tools write is found out; these print what is not:

  $ inspect encode --to hex IccCardStatusResponse card.txt >card.hex
  $ each <<'COMMANDS'
  > od -An -v -tx1 card.bin
  > od -v -Ax -tx1z card.bin
  > hexdump -v -C card.bin
  > xxd card.bin
  > base64 card.bin
  > base64 -w0 card.bin | tr '+/' '-_'
  > gzip -c card.bin
  > sed 's/../\\x&/g; s/.*/"&"/' card.hex
  > sed 's/../0x&, /g; s/^/{/; s/$/};/' card.hex
  > sed 's/../& /g' card.hex
  > sed 's/../&,/g' card.hex
  > sed 's/../&-/g' card.hex
  > sed 's/../&\r/g' card.hex
  > /usr/bin/python3 -c 'print(open("card.bin", "rb").read())'
  > /usr/bin/python3 -c 'print(list(open("card.bin", "rb").read()))'
  > /usr/bin/python3 -c 'print([b - b // 128 * 256 for b in open("card.bin", "rb").read()])'
  > od -An -v -to1 card.bin | tr -d '\n' | sed 's/ /\\/g; s/.*/"&"/'
  > COMMANDS
  $ cat notes
  $ inspect decode IccCardStatusResponse --hex "$(cat card.hex)" | cmp - card.txt
  $ each <<<"xxd -i card.bin"; cut -d: -f3 notes
   took the list of 105 bytes at column 28 and ignored the rest
  $ printf '"\\10\\0\\20\\3\\32\\r+86101\\t\\"\\\\4567 \\0";' | inspect decode Dial
  platformtype: UNKNOW
  serial: 3
  address: "+86101\t\"\\4567"
  clir: CLIR_DEFAULT

Dumps with the characters at the right, which may look like hex, and such as begin elsewhere; blank
lines, long offsets, a last line that tells the length, other digits, prefixes in capitals:

  $ while read -r text; do printf '%b\n' "$text" | inspect decode Hangup 2>&1 | tail -n 1; done <<'TEXTS'
  > 0x7ffe8:\t0x08\t0x00\n0x7ffea:\t0x10\t0x2a\t0x18\t0x10
  > 0000000000a0: 0800 102a\n0000000000a4: 1811
  > 00000040: 0800 102a 1812                           abcdef 12
  > 00000000  08 00 10 2a 18 13  |abc*..|
  > [0800102A, 1815]
  > 0000: 08 00 10 2a\n\n0004: 18 01
  > 0X8 0X00 0x10 0x2a 0x18 0X6
  > 0x08000x102a0x1807
  > [0X08, 0x00, 0X10, 42, 24, 9]
  > [8 0\t16,42,24,12]
  > [8, 0, 16, -128, 127, 24, 13]
  > TEXTS
  gsmindex: 16
  gsmindex: 17
  gsmindex: 18
  gsmindex: 19
  gsmindex: 21
  gsmindex: 1
  gsmindex: 6
  virtual-modem-inspect: standard input: hex whose bytes are unclear: several bytes after each 0x, in an unknown order
  gsmindex: 9
  gsmindex: 12
  gsmindex: 13

Within other text, what was taken is said:

  $ while read -r text; do
  >   printf '%b\n' "$text" | inspect decode Hangup 2>notes | tail -n 1 | tr '\n' ' '; cut -d: -f3 notes
  > done <<'TEXTS'
  > 11-21 18:07:01.123  1234  5678 D RILJ : > Hangup 0800102a1801 (sent)
  > 18:07:01 Hangup 08 00 10 2a 18 01 deadbeef
  > Hangup 0x08, 0x00, 0x10, 0x2a, 0x18, 0x01 end
  > 2026-11-21 data=0800102a1801.
  > first line\nHangup <0800102a1801>\nat 18:07:01 by 1234 5678
  > sent [8, 0, 16, 42, 24, 1] to 7
  > x "\\q" "\\10\\0\\20*\\30\\1" y
  > write(3, "\\10\\0\\20*\\30\\1", 6) = 6
  > data='\\x08\\x00\\x10*\\x18\\x01' of 'x'
  > TEXTS
  gsmindex: 1  took the 6 bytes of hex at line 1, columns 50 to 61, and ignored the rest
  gsmindex: 1  took the 6 bytes of hex at line 1, columns 17 to 33, and ignored the rest
  gsmindex: 1  took the 6 bytes of hex at line 1, columns 8 to 41, and ignored the rest
  gsmindex: 1  took the 6 bytes of hex at line 1, columns 17 to 28, and ignored the rest
  gsmindex: 1  took the 6 bytes of hex at line 2, columns 9 to 20, and ignored the rest
  gsmindex: 1  took the list of 6 bytes at column 6 and ignored the rest
  gsmindex: 1  took the string of 6 bytes at column 8 and ignored the rest
  gsmindex: 1  took the string of 6 bytes at column 10 and ignored the rest
  gsmindex: 1  took the string of 6 bytes at column 6 and ignored the rest

What cannot be told for sure is refused, with the way out:

  $ while read -r text; do printf '%b\n' "$text" | inspect decode Hangup 2>&1 | cut -c 40-; done <<'TEXTS'
  > Hangup 0800102a180
  > 0800102a 0800102b at 0800102a 0800102c
  > Hangup 0800102a1801\nHangup 0800102b1801
  > [10, 20, 30]
  > "\\10\\0\\20"...
  > 0x0008 0x2a10 0x0118
  > 00000000: 2a100008     0118
  > Hangup at 18:07:01.123 by 1234
  > 0000000 0800 102a 18
  > 0000: 08 00 10 2a\n18 01
  > 0000: 08 00 10 2a\n0008: 18 03
  > [8, 0, 16, 42, 24, -129]
  > data_0800102a1801
  > TEXTS
  the longest run of hex, at column 8, has 11 digits: half a byte is missing
  two runs of hex of 8 bytes in one line; give the one that is meant (--hex)
  lines 1 and 2 both have hex; give the bytes of one message (--hex), or read all lines with the command log
  a list whose numbers can be decimal or hex: say --from array or --from hex
  the string was cut where "..." stands (strace -s 65536 shows it whole)
  hex whose bytes are unclear: several bytes after each 0x, in an unknown order
  hex whose bytes are unclear: line 1: numbers of 4 bytes, in an order that the dump does not show (xxd without -e and -g, hexdump -C and od -tx1 write bytes)
  text that is neither hex (line 1, column 1) nor base64, a string with escapes, a list of numbers or a line with 4 bytes of hex; if it is the message itself, say --from binary
  hex whose bytes are unclear: line 1: numbers of 2 bytes, in an order that the dump does not show (xxd without -e and -g, hexdump -C and od -tx1 write bytes)
  hex whose bytes are unclear: line 2: no offset, as the lines before it have
  hex whose bytes are unclear: line 2: the offset 0008 does not follow the 4 bytes before it
  a list of numbers in which -129 is not a byte
  text that is neither hex (line 1, column 3) nor base64, a string with escapes, a list of numbers or a line with 4 bytes of hex; if it is the message itself, say --from binary
  $ for form in string array log hex base64; do echo '!' | inspect decode --from $form Hangup; done
  virtual-modem-inspect: standard input: no string in quotes
  virtual-modem-inspect: standard input: not a list of bytes, as numbers in brackets or braces
  virtual-modem-inspect: standard input: no line has 4 bytes of hex
  virtual-modem-inspect: standard input: not hex: line 1, column 1
  virtual-modem-inspect: standard input: not base64
  [1]
  $ inspect decode Hangup --hex ''; inspect decode Hangup --hex 08001
  virtual-modem-inspect: --hex: no bytes were given
  virtual-modem-inspect: --hex: not hex: line 1, column 5: half a byte
  [1]

  $ printf '00000000  08 00 10 2a\n*\n00000020\n' | inspect decode Hangup --from hex
  virtual-modem-inspect: standard input: not hex: line 2: repeated lines were left out of the dump; hexdump -v keeps them
  [1]

What another command reads is told so:

  $ echo '1 > Hangup 080010051801' | "$TESTDIR/make_capture.py" >hangup.pcap
  $ gzip <hangup.pcap >hangup.pcap.gz
  $ inspect decode Hangup hangup.pcap; inspect identify hangup.pcap.gz
  virtual-modem-inspect: hangup.pcap: a capture; use the command log
  virtual-modem-inspect: hangup.pcap.gz: a capture; use the command log
  [1]
  $ for text in 'serial: 1' "$(cat card.txt)" '{"platformtype": "QCOM", "serial": 1, "gsmindex": [1, 2, 3]}'; do inspect decode Hangup <<<"$text"; done
  virtual-modem-inspect: standard input: a message in the text format; the command encode turns it into bytes
  virtual-modem-inspect: standard input: a message in the text format; the command encode turns it into bytes
  virtual-modem-inspect: standard input: a message in JSON; the command encode --json turns it into bytes
  [1]

Text that happens to be a message has to be told to be one:

  $ printf '\n  !!!!!!!!!!!!!!!!!!!!!!!!!!!!!!!!' >text
  $ inspect decode ConferenceParticipant text
  virtual-modem-inspect: text: text that is neither hex (line 2, column 3) nor base64, a string with escapes, a list of numbers or a line with 4 bytes of hex; if it is the message itself, say --from binary
  [1]
  $ inspect decode --from binary ConferenceParticipant text 2>&1 | tail -n 1
  virtual-modem-inspect: text: not a valid ConferenceParticipant (malformed, wrong wire types: 3)
  $ inspect decode Hangup .
  virtual-modem-inspect: .: Is a directory
  [1]

Bytes that are no text are replaced in JSON, which is said once for each list; what acts on a terminal is escaped:

  $ echo '0801 1201ff 120141 1202fe42' | inspect decode --json ImsCallInfoIndicationInd 2>&1 | tail -n 6
    "?",
    "A",
    "?B"
   ]
  }
  # ImsCallInfoIndicationInd.info: not UTF-8; "?" stands for each byte that is not (the text output shows them)
  $ echo '2203 4a01ff 2203 4a01fe' | inspect decode --json GetCurrentCallsResponse 2>&1 | grep UTF
  # Call.number: not UTF-8; "?" stands for each byte that is not (the text output shows them)
  virtual-modem-inspect: standard input: not a valid GetCurrentCallsResponse (required fields missing: 25, texts not UTF-8: 1)
  $ printf 'platformtype: QCOM serial: 1 address: "a<\\"\\\\\\n\\001\\177\\302\\233\\342\\200\\256\\342\\201\\246\\303\\251\\363\\240\\200\\201" clir: CLIR_DEFAULT' | inspect encode Dial >dial.bin
  $ inspect decode --json Dial dial.bin | grep address
   "address": "a\\u003c\\"\\\\\\n\\u0001\\u007f\\u009b\\u202e\\u2066\xc3\xa9\\udb40\\udc01", (esc)

Of UTF-8, what is too long, a surrogate, too high or cut is none:

  $ encode() { printf 'platformtype: QCOM serial: 1 clir: CLIR_DEFAULT address: "%s"' "$1" | inspect encode Dial; }
  $ encode '\010\t\013\f\r\000\037 \303\251\340\240\200\355\237\277\356\200\200\357\277\277\360\220\200\200\364\217\277\277' |
  >   inspect decode --json Dial | grep address
   "address": "\\b\\t\\u000b\\f\\r\\u0000\\u001f \xc3\xa9\xe0\xa0\x80\xed\x9f\xbf\xee\x80\x80\xef\xbf\xbf\xf0\x90\x80\x80\xf4\x8f\xbf\xbf", (esc)
  $ encode '\300\200|\301\277|\340\237\277|\355\240\200|\355\277\277|\360\217\277\277|\364\220\200\200|\365\200\200\200|\200|\342\202|\303\300|\377' |
  >   inspect decode --json Dial 2>/dev/null | grep address
   "address": "??|??|???|???|???|????|????|????|?|??|??|?",
  $ inspect decode Dial $'\e[2J\xff\xc2\xa0\xc2\xad\xd8\x9c\xe2\x80\x8a\xe2\x80\x8b\xe2\x80\x8f\xe2\x80\x90\xe2\x80\xa7\xe2\x80\xa8\xe2\x80\xae\xe2\x80\xaf\xe2\x81\x9f\xe2\x81\xa0\xe2\x81\xaf\xe2\x81\xb0\xef\xbb\xbf\xef\xbf\xb8\xef\xbf\xb9\xef\xbf\xbb\xef\xbf\xbc\xf3\xa0\x80\x80\xf3\xa0\x81\xbf\xf3\xa0\x82\x80'
  virtual-modem-inspect: \\x1b[2J\\xff\xc2\xa0\\xc2\\xad\\xd8\\x9c\xe2\x80\x8a\\xe2\\x80\\x8b\\xe2\\x80\\x8f\xe2\x80\x90\xe2\x80\xa7\\xe2\\x80\\xa8\\xe2\\x80\\xae\xe2\x80\xaf\xe2\x81\x9f\\xe2\\x81\\xa0\\xe2\\x81\\xaf\xe2\x81\xb0\\xef\\xbb\\xbf\xef\xbf\xb8\\xef\\xbf\\xb9\\xef\\xbf\\xbb\xef\xbf\xbc\\xf3\\xa0\\x80\\x80\\xf3\\xa0\\x81\\xbf\xf3\xa0\x82\x80: No such file or directory (esc)
  [1]
