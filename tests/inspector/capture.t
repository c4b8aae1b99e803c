  $ . "$TESTDIR/setup.sh"
  $ export TZ=UTC
  $ call='state: RADIO_CALL_ACTIVE index: 1 toa: 129 ismpty: false ismt: true als: false isvoice: true isvoiceprivacy: false numberpresentation: 0 name: "" namepresentation: 0'
  $ calls="platformtype: UNKNOW serial: 2 error: RADIO_E_SUCCESS calls { $call number: \"5551\" } calls { $call number: \"5552\" }"
  $ cat >packets <<PACKETS
  > 1000000000.000001 > Dial 080010011a033131322000
  > 1000000000.250001 < NoResultResponse 080010011800
  > 1000000001.5 53:53 - 00
  > 1000000061 > NoParmRequest 08001002
  > 1000000061.001 < GetCurrentCallsResponse $(inspect encode --to hex GetCurrentCallsResponse <<<"$calls")
  > 1000000062 > Hangup 080010031801
  > 1000000063 < NoResultResponse 080010091833
  > 1000000064 < NoResultResponse 080010011833
  > 1000000065 < GetVoiceRadioTechResponse 0800100718002063
  > 1000000066 < QServiceStatusInfoList 5001
  > 1000000067 > Nonesuch 0800
  > 1000000068 < NoResultIndication 00ff
  > 1000000069 > Dial 080010041a033131322000 49
  > 1000000070 > - 564d000500000001
  > PACKETS
  $ "$TESTDIR/make_capture.py" <packets >log.pcap
  $ inspect log log.pcap
  09-09 01:46:40.000001 > Dial #1 11 B platformtype: UNKNOW serial: 1 address: "112" clir: CLIR_DEFAULT
  09-09 01:46:40.250001 < NoResultResponse #1 6 B platformtype: UNKNOW serial: 1 error: RADIO_E_SUCCESS
  09-09 01:47:41.000000 > NoParmRequest #2 4 B platformtype: UNKNOW serial: 2
  09-09 01:47:41.001000 < GetCurrentCallsResponse #2 68 B platformtype: UNKNOW serial: 2 error: RADIO_E_SUCCESS calls { state: RADIO_CALL_ACTIVE index: 1 toa: 129 ismpty: false ismt: true als: false isvoice: true isvoiceprivacy: false number: "5551" numberpresentation: 0 name: "" namepresentation: 0 } calls { state: RADIO_CALL_ACTIVE index: 1 toa: 129 ismpty: false ismt: true als: false isvoice: true isvoiceprivacy: false number: "5552" numberpresentation: 0 name: "" namepresentation: 0 }
  09-09 01:47:42.000000 > Hangup #3 6 B platformtype: UNKNOW serial: 3 gsmindex: 1
  09-09 01:47:43.000000 < NoResultResponse #9 6 B platformtype: UNKNOW serial: 9 error: RADIO_E_SIM_BUSY
  09-09 01:47:44.000000 < NoResultResponse #1 6 B platformtype: UNKNOW serial: 1 error: RADIO_E_SIM_BUSY
  09-09 01:47:45.000000 < GetVoiceRadioTechResponse #7 8 B platformtype: UNKNOW serial: 7 error: RADIO_E_SUCCESS 4: 99 # rat: 99 is not a Technology; kept as unknown field 4 (byte 6); missing required rat
  09-09 01:47:46.000000 < QServiceStatusInfoList - 2 B 10: 1 # unknown field 10 at byte 0, varint, 2 bytes with its tag
  09-09 01:47:47.000000 > Nonesuch - 2 B  # the schema has no such type
  09-09 01:47:48.000000 < NoResultIndication - 2 B  # malformed at byte 0: a field has number 0; missing required platformtype
  09-09 01:47:49.000000 > Dial #4 9 B platformtype: UNKNOW serial: 4 address: "112" # the capture keeps 21 of the frame's 23 bytes; missing required clir
  09-09 01:47:50.000000 > ? - 0 B  # a frame that ends within the name of its type
  virtual-modem-inspect: log.pcap: passed over packets between other ports: 1

JSON, with the findings of what is odd:

  $ inspect log --json log.pcap 2>/dev/null | sed -n '8p; 12p'
  {"time":"2001-09-09T01:47:45.000000Z","direction":"to telephony","type":"GetVoiceRadioTechResponse","unit":"radio","kind":"response","serial":7,"size":8,"message":{"platformtype":"UNKNOW","serial":7,"error":"RADIO_E_SUCCESS","rat":99},"findings":["rat: 99 is not a Technology; kept as unknown field 4 (byte 6)","missing required rat"]}
  {"time":"2001-09-09T01:47:49.000000Z","direction":"to modem","type":"Dial","unit":"radio","kind":"request","serial":4,"size":9,"message":{"platformtype":"UNKNOW","serial":4,"address":"112"},"findings":["the capture keeps 21 of the frame's 23 bytes","missing required clir"]}

What is asked for, by any of the marks:

  $ for words in '--type Dial --type Hangup' '--unit ims_service' '--kind indication' '--serial 2 --serial 9' --incomplete \
  >     --unknown '--grep calls.number=5552'; do
  >   echo "$words:" $(inspect log log.pcap $words 2>/dev/null | sed 's/.* [<>] \([^ ]*\) \([^ ]*\).*/\1 \2/')
  > done
  --type Dial --type Hangup: Dial #1 Hangup #3 Dial #4
  --unit ims_service: QServiceStatusInfoList -
  --kind indication: QServiceStatusInfoList - NoResultIndication -
  --serial 2 --serial 9: NoParmRequest #2 GetCurrentCallsResponse #2 NoResultResponse #9
  --incomplete: GetVoiceRadioTechResponse #7 Nonesuch - NoResultIndication - Dial #4 ? -
  --unknown: GetVoiceRadioTechResponse #7 QServiceStatusInfoList -
  --grep calls.number=5552: GetCurrentCallsResponse #2
  $ for wrong in '--unit radoi' '--kind reply' '--grep numbr=1' '--grep calls'; do
  >   inspect log log.pcap $wrong
  > done
  virtual-modem-inspect: --unit: radoi is not one of radio|ims_service|call_size|conference|data_share (see --help)
  virtual-modem-inspect: --kind: reply is not one of request|response|indication|record (see --help)
  virtual-modem-inspect: --grep: no message has a field numbr; did you mean number?
  virtual-modem-inspect: --grep: calls is not FIELD=VALUE (see --help)
  [2]

Numbers and results are asked for by name or number:

  $ "$TESTDIR/make_capture.py" >values.pcap <<PACKETS
  > 1 > virtualdata.proto.MasterSlaveNetworkInfoResp 0880d0acf30e1005
  > 2 < NoResultResponse 0800100118e807
  > 3 < NoResultResponse 080010fdffffffffffffffff011833
  > 5 < IccCardStatusResponse $(inspect encode --to hex IccCardStatusResponse card.txt)
  > 6 < QImsCall 800100
  > PACKETS
  $ for asked in value1=4000000000 serial=-3 flag16=false cardstatus.base.applications.aid~87; do
  >   echo "$asked:" $(inspect log values.pcap --grep "$asked" 2>&1 | cut -d' ' -f3-5)
  > done
  value1=4000000000: > virtualdata.proto.MasterSlaveNetworkInfoResp -
  serial=-3: < NoResultResponse #-3
  flag16=false: < QImsCall -
  cardstatus.base.applications.aid~87: < IccCardStatusResponse #7
  $ inspect log values.pcap --count --unit radio --json --serial 1 --serial -3
  {"type":"NoResultResponse","error":"1000","count":1}
  {"type":"NoResultResponse","error":"RADIO_E_SIM_BUSY","count":1}
  $ for json in '' --json; do TZ=WEST-5:30 inspect log log.pcap --type Hangup $json 2>/dev/null | cut -c 1-38; done
  09-09 07:17:42.000000 > Hangup #3 6 B 
  {"time":"2001-09-09T01:47:42.000000Z",

Who answered whom, and how often what came:

  $ inspect log --pairs log.pcap 2>/dev/null
  09-09 01:46:40.000001 #1 Dial > NoResultResponse RADIO_E_SUCCESS after 250.000 ms
  09-09 01:47:41.000000 #2 NoParmRequest > GetCurrentCallsResponse RADIO_E_SUCCESS after 1.000 ms
  09-09 01:47:43.000000 #9 NoResultResponse RADIO_E_SIM_BUSY: no request
  09-09 01:47:44.000000 #1 Dial > NoResultResponse RADIO_E_SIM_BUSY: answered again
  09-09 01:47:45.000000 #7 GetVoiceRadioTechResponse RADIO_E_SUCCESS: no request
  09-09 01:47:42.000000 #3 Hangup: no response
  09-09 01:47:49.000000 #4 Dial: no response
  # 2 answered after 125.500 ms on average, 250.000 ms at most; 2 not answered, 1 answered again, 2 responses without a request
  $ inspect log --pairs --type Hangup --type Dial log.pcap 2>/dev/null | tail -n 1
  # 1 answered after 250.000 ms on average, 250.000 ms at most; 2 not answered, 1 answered again, 0 responses without a request
  $ inspect log --pairs --json log.pcap 2>/dev/null | sed -n '2,3p'
  {"time":"2001-09-09T01:47:41.000000Z","serial":2,"request":"NoParmRequest","response":"GetCurrentCallsResponse","error":"RADIO_E_SUCCESS","latency_ms":1.000}
  {"time":"2001-09-09T01:47:43.000000Z","serial":9,"response":"NoResultResponse","error":"RADIO_E_SIM_BUSY","problem":"no request"}
  $ inspect log --count log.pcap 2>/dev/null | sed -n '1p; 8,9p'
         2  (unreadable)
         2  NoResultResponse  RADIO_E_SIM_BUSY
         1  NoResultResponse  RADIO_E_SUCCESS

Each side has serials of its own:

  $ "$TESTDIR/make_capture.py" <<'PACKETS' | inspect log --pairs
  > 1000000000 > Hangup 080010051801
  > 1000000001 < Hangup 080010051801
  > 1000000003 > NoResultResponse 080010051800
  > 1000000007 < NoResultResponse 080010051801
  > 1000000008 > Hangup 080010051801
  > 1000000009 > Hangup 080010051801
  > 1000000008.5 < NoResultResponse 0800100518e807
  > PACKETS
  09-09 01:46:41.000000 #5 Hangup > NoResultResponse RADIO_E_SUCCESS after 2000.000 ms
  09-09 01:46:40.000000 #5 Hangup > NoResultResponse RADIO_E_RADIO_NOT_AVAILABLE after 7000.000 ms
  09-09 01:46:48.000000 #5 Hangup: no response
  09-09 01:46:49.000000 #5 Hangup > NoResultResponse 1000 after an unknown time
  # 3 answered after 4500.000 ms on average, 7000.000 ms at most; 1 not answered, 0 answered again, 0 responses without a request

What waits and what was answered is forgotten in the end:

  $ asks() { seq $1 | sed "s/.*/Hangup platformtype: QCOM serial: & gsmindex: 1$2/"; }
  $ answer='NoResultResponse platformtype: QCOM serial: &  error: RADIO_E_SUCCESS'
  $ for count in 65536 65537; do
  >   (asks $count; sed s/.*/"$answer"/ <<<1) | inspect log --pairs | tail -n 1
  >   (asks $count "\n$answer"; sed s/.*/"$answer"/ <<<1) | inspect log --pairs | tail -n 1
  > done
  # 1 answered; 65535 not answered, 0 answered again, 0 responses without a request
  # 65536 answered; 0 not answered, 1 answered again, 0 responses without a request
  # 0 answered; 65537 not answered, 0 answered again, 1 responses without a request
  # 65537 answered; 0 not answered, 0 answered again, 1 responses without a request

Masked, also where bytes do not fit their type:

  $ printf '1000000000 < %s\n' 'EmergencyNumber 080010011a063535313132322001' 'CellIdentityOperatorNames 0a063535313132321005' |
  >   "$TESTDIR/make_capture.py" | inspect log --redact | cut -c 1-120
  09-09 01:46:40.000000 < EmergencyNumber - 14 B mnc: "XXXXXX" categories: EMERGENCY_POLICE # number: declared as string, 
  09-09 01:46:40.000000 < CellIdentityOperatorNames - 10 B alphalong: "XXXXXX" # alphashort: declared as string, came as v

Compressed, in pieces, through a pipe, and broken:

  $ inspect log log.pcap >plain 2>/dev/null; (head -c 99 log.pcap | gzip; tail -c +100 log.pcap | gzip) | inspect log 2>/dev/null | cmp - plain
  $ gzip -c log.pcap | head -c 300 | inspect log >/dev/null
  virtual-modem-inspect: standard input: the gzip file is cut
  [1]
  $ (gzip -c log.pcap | head -c 200; head -c 100 card.bin) | inspect log >/dev/null
  virtual-modem-inspect: standard input: the gzip file is broken
  [1]

Written elsewhere, and on other links:

  $ sed '/49$/d' packets >whole
  $ "$TESTDIR/make_capture.py" <whole | inspect log >plain 2>&1
  $ for form in nano big big-nano pcapng 'pcap 228' 'pcap 0 02000000' 'pcap 108 00000002' 'pcap 1 ffffffffffffffffffffffff0800' \
  >     'pcap 113 00000001000600000000000000000800' 'pcap 276 0800000000000001000100060000000000000000'; do
  >   "$TESTDIR/make_capture.py" $form <whole | inspect log 2>&1 | cmp - plain
  > done
  $ printf '1.123456789 > Hangup/5 080010051801\n' | "$TESTDIR/make_capture.py" pcapng | inspect log --json | cut -d, -f 1,2,6
  {"time":"1970-01-01T00:00:01.123456Z","direction":"to modem","operation":5

Times of seconds alone, after 2038, beyond what nanoseconds count, and fractions of a second and more:

  $ for form in pcapng:0 pcapng:9 pcap; do
  >   printf '%s > Hangup/5 080010051801\n' 2000000000.987654321 4294967295 9999999999 | head -n $((${#form} / 2)) |
  >     "$TESTDIR/make_capture.py" $form | inspect log --json | cut -d, -f1
  > done
  {"time":"2033-05-18T03:33:20.000000Z"
  {"time":"2106-02-07T06:28:15.000000Z"
  {"time":null
  {"time":"2033-05-18T03:33:20.987654Z"
  {"time":"2106-02-07T06:28:15.000000Z"
  {"time":null
  {"time":"2033-05-18T03:33:20.987654Z"
  {"time":"2106-02-07T06:28:15.000000Z"
  $ for microseconds in '\100\102\017\0' '\0\0\0\377'; do
  >   (head -c 28 log.pcap && printf $microseconds && tail -c +33 log.pcap) | inspect log --json 2>/dev/null | head -n 1 | cut -d, -f1
  > done
  {"time":null
  {"time":null
  $ (head -c 28 log.pcap; printf '\364\377\377\377'; tail -c +33 log.pcap) >fraction.pcap
  $ inspect mask fraction.pcap masked.pcap 2>/dev/null; inspect log masked.pcap | head -n 1 | cut -c -23
  01-01 00:00:00.000000 >

Frames that are not as they should be, and packets that carry none:

  $ "$TESTDIR/make_capture.py" <<PACKETS | inspect log --incomplete
  > 1 > - 564e00060000000048616e677570
  > 2 > - 564d0006000000
  > 3 > - 564d000000000000
  > 5 > - 564d004100000000$(printf '61%.0s' {1..65})
  > 6 > - 564d00060000000748616e677570080010051801
  > 7 > - 564d00060000000548616e677570080010051801
  > 8 > - 564d00060000000148616e677570
  > 9 > Hangup 080010051801 39
  > 11 > Hangup 080010051801 42
  > 12 47601:53 Hangup 080010051801
  > 15 47601:47601 Hangup 080010051801
  > 16 < ImsCallInfoIndicationInd 0801120141120142 65
  > PACKETS
  01-01 00:00:01.000000 > ? - 0 B  # not a frame
  01-01 00:00:02.000000 > ? - 0 B  # not a frame
  01-01 00:00:03.000000 > ? - 0 B  # a frame without the name of a type
  01-01 00:00:05.000000 > ? - 0 B  # a frame without the name of a type
  01-01 00:00:06.000000 > Hangup #5 6 B platformtype: UNKNOW serial: 5 gsmindex: 1 # the frame announces 7 bytes and has 6
  01-01 00:00:07.000000 > Hangup #5 5 B platformtype: UNKNOW serial: 5 gsmindex: 0 # 1 bytes after the frame; malformed at byte 5 in gsmindex: the input ends inside a varint
  01-01 00:00:08.000000 > Hangup - 0 B  # the frame announces 1 bytes and has 0; missing required platformtype; missing required serial; missing required gsmindex
  01-01 00:00:09.000000 > ? - 0 B  # the capture keeps 11 of the frame's 20 bytes
  01-01 00:00:11.000000 > Hangup - 0 B  # the capture keeps 14 of the frame's 20 bytes; missing required platformtype; missing required serial; missing required gsmindex
  01-01 00:00:16.000000 < ImsCallInfoIndicationInd - 5 B platformtype: QCOM info: "A" # the capture keeps 37 of the frame's 40 bytes
  virtual-modem-inspect: standard input: passed over packets between other ports: 2
  $ whole=$(echo '0 > Hangup 080010051801' | "$TESTDIR/make_capture.py" | tail -c +41 | xxd -p -c 99)
  $ for packet in ${whole:0:12}4000${whole:16} 46${whole:2:38}01010101${whole:40} 65${whole:2} ${whole:0:12}2000${whole:16} ${whole:0:12}0001${whole:16} \
  >     ${whole:0:18}06${whole:20} 44${whole:2} 46${whole:2:52} ${whole:0:48}0007${whole:52} ${whole:0:54} 45 00 ${whole}0000; do
  >   echo "$((second++)) = - $packet"
  > done | "$TESTDIR/make_capture.py" | inspect log
  01-01 00:00:00.000000 > Hangup #5 6 B platformtype: UNKNOW serial: 5 gsmindex: 1
  01-01 00:00:01.000000 > Hangup #5 6 B platformtype: UNKNOW serial: 5 gsmindex: 1
  01-01 00:00:12.000000 > Hangup #5 6 B platformtype: UNKNOW serial: 5 gsmindex: 1
  virtual-modem-inspect: standard input: passed over packets between other ports: 10

What is none:

  $ printf '1000000001.5 53:53 - 00\n' | "$TESTDIR/make_capture.py" | inspect log
  virtual-modem-inspect: standard input: no message in it; packets between other ports: 1
  [1]
  $ head -c 24 log.pcap | sed 's/\x65/\x69/' | inspect log
  virtual-modem-inspect: standard input: a capture of link type IEEE802_11, which does not carry the messages' datagrams
  [1]
