  $ . "$TESTDIR/setup.sh"
  $ cat >modem.log <<'LOG'
  > 11-21 18:07:01.123  1234  5678 D RILJ    : [0003]> Dial 08011003 is cut
  > 11-21 18:07:01.124  1234  5678 D RILJ    : [0003]> Dial 080110031a0331313220 00
  > 11-21 18:07:01.250  1234  5678 D RILJ    : [0003]< NoResultResponse {platformtype: QCOM serial: 3 error: RADIO_E_SUCCESS}
  > 2026-11-21T18:07:02,5 modem: IccidChangedInd platformtype: QCOM [... 512 more bytes]
  > Hangup: 08 00 10 2a 18 01
  > Hangup -> 0800102a180
  > a line about Dial and nothing else
  > GetCurrentCallsResponse: platformtype: QCOM serial: 4 error: RADIO_E_SUCCESS calls { state: RADIO_CALL_ACTIVE index: 1 number: "55 [... 30 more bytes]
  > Hangup: platformtype: QCOM serial: 5 gsmindex: 1 9: 7
  > LOG
  $ inspect log modem.log
  11-21 18:07:01.123 > Dial #3 4 B platformtype: QCOM serial: 3 # missing required address; missing required clir
  11-21 18:07:01.124 > Dial #3 11 B platformtype: QCOM serial: 3 address: "112" clir: CLIR_DEFAULT
  11-21 18:07:01.250 < NoResultResponse #3 6 B platformtype: QCOM serial: 3 error: RADIO_E_SUCCESS
  2026-11-21T18:07:02,5 < IccidChangedInd - 2 B platformtype: QCOM # the log holds the beginning only
  - > Hangup #42 6 B platformtype: UNKNOW serial: 42 gsmindex: 1
  - > Hangup - 0 B  # the longest run of hex, at column 5, has 11 digits: half a byte is missing; missing required platformtype; missing required serial; missing required gsmindex
  - < GetCurrentCallsResponse #4 12 B platformtype: QCOM serial: 4 error: RADIO_E_SUCCESS calls { state: RADIO_CALL_ACTIVE index: 1 } # the log holds the beginning only; missing required calls[0].toa; missing required calls[0].ismpty; missing required calls[0].ismt; missing required calls[0].als; missing required calls[0].isvoice; missing required calls[0].isvoiceprivacy; missing required calls[0].number; missing required calls[0].numberpresentation; missing required calls[0].name; missing required calls[0].namepresentation
  - > Hangup #5 6 B platformtype: QCOM serial: 5 gsmindex: 1
  virtual-modem-inspect: modem.log: passed over lines without the type and the content of a message: 1
  $ inspect log --pairs modem.log 2>/dev/null
  11-21 18:07:01.123 #3 Dial: no response
  11-21 18:07:01.124 #3 Dial > NoResultResponse RADIO_E_SUCCESS after 126.000 ms
  - #4 GetCurrentCallsResponse RADIO_E_SUCCESS: no request
  - #42 Hangup: no response
  - #5 Hangup: no response
  # 1 answered after 126.000 ms on average, 126.000 ms at most; 3 not answered, 0 answered again, 1 responses without a request
  $ echo 'nothing of that kind' | inspect log
  virtual-modem-inspect: standard input: no message in it; lines without the type and the content of a message: 1
  [1]
  $ printf 'Hangup 0800102a1801' | inspect log --json
  {"time":null,"direction":"to modem","type":"Hangup","unit":"radio","kind":"request","serial":42,"size":6,"message":{"platformtype":"UNKNOW","serial":42,"gsmindex":1}}
