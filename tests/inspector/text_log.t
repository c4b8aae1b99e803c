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
  > LOG
  $ inspect log modem.log
  11-21 18:07:01.123 > Dial #3 4 B platformtype: QCOM serial: 3 # missing required address; missing required clir
  11-21 18:07:01.124 > Dial #3 11 B platformtype: QCOM serial: 3 address: "112" clir: CLIR_DEFAULT
  11-21 18:07:01.250 < NoResultResponse #3 6 B platformtype: QCOM serial: 3 error: RADIO_E_SUCCESS
  2026-11-21T18:07:02,5 < IccidChangedInd - 0 B  # the log has only the beginning; missing required platformtype
  - > Hangup #42 6 B platformtype: UNKNOW serial: 42 gsmindex: 1
  - > Hangup - 0 B  # the longest run of hex, at column 5, has 11 digits: half a byte is missing; missing required platformtype; missing required serial; missing required gsmindex
  - < GetCurrentCallsResponse #4 12 B platformtype: QCOM serial: 4 error: RADIO_E_SUCCESS calls { state: RADIO_CALL_ACTIVE index: 1 } # the log has only the beginning; missing required calls[0].toa; missing required calls[0].ismpty; missing required calls[0].ismt; missing required calls[0].als; missing required calls[0].isvoice; missing required calls[0].isvoiceprivacy; missing required calls[0].number; missing required calls[0].numberpresentation; missing required calls[0].name; missing required calls[0].namepresentation
  virtual-modem-inspect: modem.log: passed over lines without the type and the content of a message: 1
  $ printf 'nothing of that kind' | inspect log
  virtual-modem-inspect: standard input: no message in it; lines without the type and the content of a message: 1
  [1]

Times and names wherever they stand, texts that were cut anywhere, lines of any length:

  $ inspect log <<'LOG'
  > 18:07:01 Dial Hangup 0800102a1801
  > 1118:07:01 12:00:00,123456789x Hangup=(0800102a1801)
  > 2026-02-30 18:07:01. Hangup>08 00 10 2a 18 01
  > HangupX 0800102a1801
  > virtualdata.proto.SlaveDeactivateDataCallRequest: 080010011802
  > Hangup { platformtype: QCOM serial: 7 gsmindex: 1 } of two
  > Hangup platformtype: NOSUCH
  > Dial: platformtype: QCOM serial: 8 address: "a\"} { 1" uusinfo { uustype: TYPE1_REQUIRED uusdata: "x y [... 9 more bytes]
  > LOG
  18:07:01 > Hangup #42 6 B platformtype: UNKNOW serial: 42 gsmindex: 1
  12:00:00,123456789 > Hangup #42 6 B platformtype: UNKNOW serial: 42 gsmindex: 1
  2026-02-30 18:07:01 > Hangup #42 6 B platformtype: UNKNOW serial: 42 gsmindex: 1
  - > virtualdata.proto.SlaveDeactivateDataCallRequest - 6 B value1: 0 value2: 1 value3: 2
  - > Hangup #7 6 B platformtype: QCOM serial: 7 gsmindex: 1
  - > Dial #8 17 B platformtype: QCOM serial: 8 address: "a\"} { 1" uusinfo { uustype: TYPE1_REQUIRED } # the log has only the beginning; missing required clir
  virtual-modem-inspect: standard input: passed over lines without the type and the content of a message: 2

What this program, the client and the demonstration write, and logcat in its formats:

  $ inspect log modem.log 2>/dev/null >own
  $ inspect log own | diff own -
  $ inspect log --count "$SOURCE/tests/exchange/transcript.txt" 2>/dev/null | awk '{n += $1} END {print n}'
  62
  $ grep -c -e '-> ' -e '<- ' "$SOURCE/tests/exchange/transcript.txt"
  62
  $ inspect log <<'LOG'
  > -> Dial/0 platformtype: QCOM serial: 1 address: "XXX" clir: CLIR_DEFAULT
  > <- Hangup/200 platformtype: QCOM # 1 unknown field, 2 bytes, not shown
  > <- NoResultIndication/4
  >      ignored: RadioCallRing platformtype: QCOM # malformed at byte 3 in isgsm: the input ends inside a varint
  > <- RadioCallRing/0 platformtype: QCOM # malformed at byte 3 in isgsm: the input ends inside a varint
  >   18.97 -> NoParmRequest                      4  last call failure cause: platformtype: QCOM serial: 2
  >   19.03 <- NoParmRequest                      4  serial: 3 (no platformtype)
  > D/Dial    ( 1234): Hangup platformtype: QCOM serial: 4 gsmindex: 1
  > 11-21 18:07:01.123 D/Hangup( 1234): platformtype: QCOM serial: 5 gsmindex: 1
  > 11-21 18:07:01.123  1234  5678 D RILJ    : [0003]> Hangup (took 5: 3 ms) sent as 08 00 10 06 18 01 at last
  > modem: Hangup was sent with platformtype: QCOM serial: 7 gsmindex: 1 status: late
  > Hangup failed, serial: 8 is lost at 18: 5 with 0800102a
  > LOG
  - > Dial #1 11 B platformtype: QCOM serial: 1 address: "XXX" clir: CLIR_DEFAULT
  - < Hangup op 200 - 2 B platformtype: QCOM # missing required serial; missing required gsmindex
  - < NoResultIndication op 4 - 0 B  # missing required platformtype
  - < RadioCallRing - 2 B platformtype: QCOM # the log has only the beginning; missing required isgsm
  18.97 > NoParmRequest #2 4 B platformtype: QCOM serial: 2
  19.03 < NoParmRequest #3 2 B serial: 3 # missing required platformtype
  - > Hangup #4 6 B platformtype: QCOM serial: 4 gsmindex: 1
  11-21 18:07:01.123 > Hangup #5 6 B platformtype: QCOM serial: 5 gsmindex: 1
  11-21 18:07:01.123 > Hangup #6 6 B platformtype: UNKNOW serial: 6 gsmindex: 1
  - > Hangup #7 6 B platformtype: QCOM serial: 7 gsmindex: 1
  virtual-modem-inspect: standard input: passed over lines without the type and the content of a message: 2

Times that nothing can count, and a New Year that no line tells:

  $ inspect log --pairs <<'LOG'
  > 9999-12-31 23:59:59 Hangup 080010071801
  > 0000-00-00 00:00:00 NoResultResponse 080010071800
  > 01-01 00:00:01.000000002 Hangup 080010041801
  > 12-31 23:59:59.9999999999 Hangup 080010051801
  > 01-01 00:00:00.1 NoResultResponse 080010051800
  > 01-01 00:00:01.002000001 NoResultResponse 080010041800
  > 11-21 23:59:59.5 Hangup 080010011801
  > 11-22 00:00:00.25 NoResultResponse 080010011800
  > 10:00:00 Hangup 080010031801
  > NoResultResponse 080010031800
  > LOG
  9999-12-31 23:59:59 #7 Hangup > NoResultResponse RADIO_E_SUCCESS
  12-31 23:59:59.9999999999 #5 Hangup > NoResultResponse RADIO_E_SUCCESS after 100.000 ms
  01-01 00:00:01.000000002 #4 Hangup > NoResultResponse RADIO_E_SUCCESS after 1.999 ms
  11-21 23:59:59.5 #1 Hangup > NoResultResponse RADIO_E_SUCCESS after 750.000 ms
  10:00:00 #3 Hangup > NoResultResponse RADIO_E_SUCCESS
  # 5 answered after 284.000 ms on average, 750.000 ms at most; 0 not answered, 0 answered again, 0 responses without a request
  $ (head -c 70000 /dev/zero | tr '\0' x; echo ' Hangup 0800102a1801'; head -c 1048576 /dev/zero | tr '\0' x; printf 'Hangup 0800102a1801') | inspect log
  - > Hangup #42 6 B platformtype: UNKNOW serial: 42 gsmindex: 1
  - > Hangup #42 6 B platformtype: UNKNOW serial: 42 gsmindex: 1
  virtual-modem-inspect: standard input: passed over lines without the type and the content of a message: 1
  $ inspect log --follow <(echo Hangup 0800102a1801)
  - > Hangup #42 6 B platformtype: UNKNOW serial: 42 gsmindex: 1
