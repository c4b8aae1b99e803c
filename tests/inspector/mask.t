  $ . "$TESTDIR/setup.sh"
  $ export TZ=UTC
  $ make() { "$TESTDIR/make_capture.py" "$@"; }

A capture, in which time, direction, type and operation stay:

  $ cat >packets <<PACKETS
  > 1000000000.000001 > Dial 080010011a0635353131323220009a3e03414243
  > 1000000001 < CellIndentityLte $(echo 'ci: 27439873 pci: 301 tac: 23041 earfcn: 1850' | inspect encode --to hex CellIndentityLte)
  > 1000000002 < EmergencyNumber 080010011a063535313132322001
  > 1000000003 > Nonesuch 551122
  > 1000000004 = - 353531313232
  > 1000000005 > - 353531313232
  > 1000000006 < IccCardStatusResponse $(inspect encode --to hex IccCardStatusResponse card.txt) 90
  > PACKETS
  $ make <packets >secret.pcap
  $ inspect mask secret.pcap masked.pcap
  virtual-modem-inspect: secret.pcap: left out packets between other ports: 1
  virtual-modem-inspect: secret.pcap: left out the bytes of frames whose type the schema does not have: 2
  $ inspect log masked.pcap
  09-09 01:46:40.000001 > Dial #1 20 B platformtype: UNKNOW serial: 1 address: "XXXXXX" clir: CLIR_DEFAULT 995: "XXX" # unknown field 995 at byte 14, length-delimited, 6 bytes with its tag
  09-09 01:46:41.000000 < CellIndentityLte - 9 B ci: 0 pci: 0 tac: 0 earfcn: 1850
  09-09 01:46:42.000000 < EmergencyNumber - 14 B mnc: "XXXXXX" categories: EMERGENCY_POLICE 1: 0 2: 0 # number: declared as string, came as varint; kept as unknown field 1 (byte 0); mcc: declared as string, came as varint; kept as unknown field 2 (byte 2); missing required number; missing required mcc; missing required sources
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
  $ echo '1 < Hangup/7 080010051801' | make >one.pcap
  $ for form in pcap nano; do
  >   echo '1.123456789 < Hangup/7 080010051801' | make $form | inspect mask - - | od -An -tu4 -j24 -N8
  > done
            1     123456
            1  123456789
  $ echo '1.123456789 < Hangup 080010051801' | make nano | inspect mask one.pcap - one.pcap - | head -c 4 | xxd -p
  4d3cb2a1

One message, in the form that it came in:

  $ inspect mask --type IccCardStatusResponse card.bin masked.bin && inspect diff IccCardStatusResponse card.bin masked.bin
  modified: cardstatus.iccid: "8988211000000123456" -> "XXXXXXXXXXXXXXXXXXX"
  [3]
  $ base64 card.bin | inspect mask --from base64 --type IccCardStatusResponse - - | cmp - <(xxd -p -c 999 masked.bin)

Masked are strings and numbers, at any depth:

  $ echo '0801 1003 1a00 2801 2864 2885e6ffffffffffff01 c23e03414243' | inspect decode --redact --trust-type CdmaSmsAddress 2>/dev/null | sed -n '3,$p'
  digits: 0
  digits: 0
  digits: 0
  # numbertype: declared as enum, came as length-delimited; kept as unknown field 3 (byte 4)
  # unknown field 1000 at byte 20, length-delimited, 6 bytes with its tag
  # missing required numbertype
  # missing required numberplan

Masks go by the type. What does not fit it may be another one, so nothing of it is shown, and of a
frame of a recording no string and no list of numbers:

  $ echo 080010011a063535313132322000 | inspect decode --redact EmergencyNumber
  # not shown, as it does not fit the type: required fields missing: 3, wrong wire types: 2
  virtual-modem-inspect: standard input: not shown, as it does not fit EmergencyNumber (required fields missing: 3, wrong wire types: 2); --trust-type masks it anyway, but data of another type may then show
  [1]
  $ (echo 0e080110051801 4a06353535313132 | xxd -r -p; inspect encode --delimited Hangup <(echo 'platformtype: QCOM serial: 5551122 gsmindex: 1')) >stream
  $ inspect decode --redact --delimited Hangup stream
  # message 0 at byte 1, 14 bytes
  # not shown, as it does not fit the type: unknown fields: 1
  # message 1 at byte 16, 9 bytes
  platformtype: QCOM
  serial: 5551122
  gsmindex: 1
  virtual-modem-inspect: stream: 1 of 2 messages are not shown, as they do not fit Hangup
  [1]
  $ echo 0801 1005 1801 4801 | inspect decode --redact Hangup
  # not shown, as it does not fit the type: unknown fields: 1
  virtual-modem-inspect: standard input: not shown, as it does not fit Hangup (unknown fields: 1); --trust-type masks it anyway, but data of another type may then show
  [1]
  $ echo '1 < CellIdentityOperatorNames 0a063535313132321005' | make | inspect mask - - | inspect log | cut -c 1-82
  01-01 00:00:01.000000 < CellIdentityOperatorNames - 10 B alphalong: "XXXXXX" 2: 0 
  $ echo 080010011a063535313132322000 | inspect mask --trust-type --type EmergencyNumber - -
  080010001a063535313132322000

Nothing is left half done; what a file was stays what it was:

  $ echo kept >kept
  $ echo 080010011a063535313132322000 | inspect mask --type EmergencyNumber - kept
  virtual-modem-inspect: standard input: not masked, as it does not fit EmergencyNumber (required fields missing: 3, wrong wire types: 2); --trust-type masks it anyway, but data of another type may then stay
  [1]
  $ inspect mask card.bin kept
  virtual-modem-inspect: card.bin: not a capture; one message needs --type
  [1]
  $ head -c 110 secret.pcap | inspect mask - kept
  virtual-modem-inspect: standard input: broken after packet 1: truncated dump file; tried to read 16 header bytes, only got 10
  [1]
  $ cat kept && ls kept*
  kept
  kept
  $ chmod 644 kept && ln -s kept link && ln -s nowhere lost
  $ inspect mask one.pcap link && inspect log kept | cut -c 20-30; stat -c '%F %a' link kept
  00 < Hangup
  symbolic link 777
  regular file 644
  $ for out in /nonexistent/out . lost; do inspect mask one.pcap $out; done
  virtual-modem-inspect: /nonexistent/out: No such file or directory
  virtual-modem-inspect: .: Is a directory
  virtual-modem-inspect: lost: a symbolic link to a file that does not exist
  [1]
  $ mkfifo pipe && { timeout 9 cat pipe | tail -c 6 | xxd -p & } && inspect mask one.pcap pipe && wait
  080010051801
  $ (trap '' XFSZ; ulimit -f 0; inspect mask one.pcap kept || inspect mask one.pcap -) >/dev/full
  virtual-modem-inspect: kept: File too large
  virtual-modem-inspect: standard output: No space left on device
  [1]
  $ ls kept*
  kept

Without the list there is no masking by mistake, and an entry that names no field is an error:

  $ mkdir data && cp "$BUILD"/share/virtual-modem-protos/*.binpb data
  $ export VIRTUAL_MODEM_DESCRIPTOR_SET=data/virtual-modem-protos.binpb
  $ inspect decode --redact IccCardStatusResponse card.bin || inspect mask secret.pcap out || inspect log --redact secret.pcap || inspect diff --redact secret.pcap secret.pcap
  virtual-modem-inspect: there is no subscriber_data.txt beside the descriptor set: nothing can be masked
  virtual-modem-inspect: there is no subscriber_data.txt beside the descriptor set: nothing can be masked
  virtual-modem-inspect: there is no subscriber_data.txt beside the descriptor set: nothing can be masked
  virtual-modem-inspect: there is no subscriber_data.txt beside the descriptor set: nothing can be masked
  [1]
  $ echo 'Dial.nosuch # gone' >data/subscriber_data.txt
  $ inspect list
  virtual-modem-inspect: data/subscriber_data.txt line 1: no field is named Dial.nosuch
  [1]
