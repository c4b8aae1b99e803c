  $ . "$TESTDIR/setup.sh"
  $ export TZ=UTC
  $ cat >packets <<PACKETS
  > 1000000000.000001 > Dial 080010011a0635353131323220009a3e03414243
  > 1000000001 < CellIndentityLte $(echo 'ci: 27439873 pci: 301 tac: 23041 earfcn: 1850' | inspect encode --to hex CellIndentityLte)
  > 1000000002 < EmergencyNumber 080010011a063535313132322001
  > 1000000003 > Nonesuch 551122
  > 1000000004 = - 353531313232
  > 1000000005 > - 353531313232
  > 1000000006 < IccCardStatusResponse $(inspect encode --to hex IccCardStatusResponse card.txt) 90
  > PACKETS
  $ "$TESTDIR/make_capture.py" <packets >secret.pcap
  $ inspect mask secret.pcap masked.pcap
  virtual-modem-inspect: secret.pcap: left out packets between other ports: 1
  virtual-modem-inspect: secret.pcap: left out the bytes of frames whose type the schema does not have: 2
  $ inspect log masked.pcap
  09-09 01:46:40.000001 > Dial #1 20 B platformtype: UNKNOW serial: 1 address: "XXXXXX" clir: CLIR_DEFAULT 995: "XXX" # unknown field 995 at byte 14, length-delimited, 6 bytes with its tag
  09-09 01:46:41.000000 < CellIndentityLte - 9 B ci: 0 pci: 0 tac: 0 earfcn: 1850
  09-09 01:46:42.000000 < EmergencyNumber - 14 B mnc: "XXXXXX" categories: EMERGENCY_POLICE 1: 0 2: 0 # number: declared as string, came as varint; kept as unknown field 1 (byte 0), so required number is absent; mcc: declared as string, came as varint; kept as unknown field 2 (byte 2), so required mcc is absent; missing required sources
  09-09 01:46:43.000000 > Nonesuch - 0 B  # the schema has no such type
  09-09 01:46:46.000000 < IccCardStatusResponse #7 33 B platformtype: UNKNOW serial: 7 error: RADIO_E_SUCCESS cardstatus { base { cardstate: CARD_PRESENT universalpinstate: PIN_UNKNOWN gsmumtssubscriptionappindex: 0 cdmasubscriptionappindex: -1 imssubscriptionappindex: 0 } } # malformed at byte 33 in cardstatus.base.imssubscriptionappindex: the input ends inside a varint; missing required cardstatus.physicalslotid; missing required cardstatus.atr; missing required cardstatus.iccid
  $ grep -c -a -e 551122 -e ABC -e 89882 masked.pcap
  0
  [1]
  $ /usr/bin/python3 -c 'import struct; print(sum(struct.unpack(">10H", open("masked.pcap", "rb").read()[40:60])) % 0xFFFF)'
  0
  $ stat -c %a masked.pcap
  600
  $ gzip -c secret.pcap | inspect mask - - 2>/dev/null | cmp - masked.pcap
  $ echo '1.123456 < Hangup/7 080010051801' | "$TESTDIR/make_capture.py" >one.pcap
  $ inspect mask one.pcap - | cmp - one.pcap
  - one.pcap differ: char 51, line 1
  [1]
  $ inspect mask - - <secret.pcap 2>/dev/null | cmp - masked.pcap

One message, in the form that it came in:

  $ inspect mask --type IccCardStatusResponse card.bin masked.bin && inspect diff IccCardStatusResponse card.bin masked.bin
  modified: cardstatus.iccid: "8988211000000123456" -> "XXXXXXXXXXXXXXXXXXX"
  [3]
  $ inspect mask --type IccCardStatusResponse - - <card.bin | cmp - masked.bin
  $ inspect encode --to hex IccCardStatusResponse card.txt | inspect mask --type IccCardStatusResponse - - | inspect decode IccCardStatusResponse | grep iccid
    iccid: "XXXXXXXXXXXXXXXXXXX"
  $ base64 card.bin | inspect mask --from base64 --type IccCardStatusResponse - - | cmp - <(xxd -p -c 999 masked.bin)
  $ echo 080010011a063535313132322000 | inspect mask --trust-type --type EmergencyNumber - -
  080010001a063535313132322000

What does not fit its type is not masked by it, and nothing is left half done:

  $ echo kept >kept
  $ echo 080010011a063535313132322000 | inspect mask --type EmergencyNumber - kept
  virtual-modem-inspect: standard input: not masked, as it does not fit EmergencyNumber (required fields missing: 3, wrong wire types: 2); --trust-type masks it all the same, and what is another type's stays
  [1]
  $ inspect mask card.bin kept
  virtual-modem-inspect: card.bin: not a capture; one message needs --type
  [1]
  $ head -c 110 secret.pcap | inspect mask - kept
  virtual-modem-inspect: standard input: broken after packet 1: truncated dump file; tried to read 16 header bytes, only got 10
  [1]
  $ cat kept; ls
  kept
  card.bin
  card.txt
  kept
  masked.bin
  masked.pcap
  one.pcap
  packets
  secret.pcap
  $ inspect mask secret.pcap /nonexistent/out
  virtual-modem-inspect: /nonexistent/out: No such file or directory
  [1]
  $ inspect mask secret.pcap .
  virtual-modem-inspect: .: Is a directory
  [1]
  $ inspect mask secret.pcap - >/dev/full
  virtual-modem-inspect: standard output: No space left on device
  [1]
  $ inspect mask --type IccCardStatusResponse card.bin /dev/full
  virtual-modem-inspect: /dev/full: No space left on device
  [1]
  $ inspect mask secret.pcap /dev/full
  virtual-modem-inspect: /dev/full: No space left on device
  [1]
