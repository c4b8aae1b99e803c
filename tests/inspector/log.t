  $ . "$TESTDIR/setup.sh"
  $ export TZ=UTC
  $ make() { "$TESTDIR/make_capture.py" "$@"; }

Recordings that were rotated are read as one, and followed when their writer renames them:

  $ echo '1 > Dial 080010011a033131322000' | make >call.pcap.1
  $ echo '2 < NoResultResponse 080010011800' | make >call.pcap
  $ inspect log --pairs call.pcap.1 call.pcap | head -n 1
  01-01 00:00:01.000000 #1 Dial > NoResultResponse RADIO_E_SUCCESS after 1000.000 ms
  $ cp call.pcap.1 live && mkfifo lines && { "$INSPECT" log --follow call.pcap live >lines & } 2>/dev/null
  $ exec 3<lines && head -n 2 <&3 | cut -c 13-31
  02.000000 < NoResul
  01.000000 > Dial #1
  $ tail -c +25 call.pcap | head -c 9 >>live && sleep .1 && tail -c +34 call.pcap >>live && mv live old && cp call.pcap live && head -n 2 <&3 | cut -c 13-31
  02.000000 < NoResul
  02.000000 < NoResul
  $ cat call.pcap.1 >live && head -n 1 <&3 | cut -c 13-31
  01.000000 > Dial #1
  $ kill $! && exec 3<&-

A time between that makes no sense is unknown:

  $ printf '%s\n' '1 > Dial 080010011a033131322000' '86402 < NoResultResponse 080010011800' | make >late.pcap
  $ inspect log --pairs late.pcap | head -n 1; inspect log --pairs --json late.pcap | cut -d, -f 6
  01-01 00:00:01.000000 #1 Dial > NoResultResponse RADIO_E_SUCCESS after an unknown time
  "latency_ms":null}

Fields in an unusual order lack nothing, for filters and masks too:

  $ make >order.pcap <<'PACKETS'
  > 1 > Hangup 180110020800
  > 2 > Hangup 18011002
  > 3 > GsmSmsMessage 12034142430a03414243
  > PACKETS
  $ inspect log --incomplete order.pcap
  01-01 00:00:02.000000 > Hangup #2 4 B serial: 2 gsmindex: 1 # missing required platformtype
  $ inspect mask order.pcap - | inspect log --type GsmSmsMessage
  01-01 00:00:03.000000 > GsmSmsMessage - 10 B smscpdu: "ABC" pdu: "XXX"

A diagram, in which nothing that a message holds is taken for more than text:

  $ make >odd.pcap <<'PACKETS'
  > 1 > Dial/4 080010011a033131322000
  > 1.1 > Hangup 080010051801
  > 2 < NoResultResponse 080010011800
  > 3 < NoResultResponse 080010011833
  > 4 > END 00
  > 5 < GetVoiceRadioTechResponse 0800100718002063
  > 6 < NoResultIndication 0800480148014801480148014801
  > PACKETS
  $ inspect log --diagram --pairs odd.pcap
  sequenceDiagram
    participant T as Telephony
    participant M as Modem
    T->>M: Dial op 4 serial 1
    T->>M: Hangup serial 5
    M-->>T: NoResultResponse serial 1 RADIO_E_SUCCESS after 1000.000 ms
    M-->>T: NoResultResponse serial 1 RADIO_E_SIM_BUSY - answered again
    T-)M: #69;ND
    Note over T,M: the schema has no such type
    M-->>T: GetVoiceRadioTechResponse serial 7 RADIO_E_SUCCESS - no request
    Note over T,M: rat#58; 99 is not a Technology#59; kept as unknown field 4 (byte 6)<br/>missing required rat
    M-)T: NoResultIndication
    Note over T,M: unknown field 9 at byte 2, varint, 2 bytes with its tag<br/>unknown field 9 at byte 4, varint, 2 bytes with its tag<br/>unknown field 9 at byte 6, varint, 2 bytes with its tag<br/>and 3 more
    Note over T,M: Hangup serial 5#58; no response
  $ inspect log --diagram --type Dial odd.pcap | tail -n 1
    T->>M: Dial op 4 serial 1
