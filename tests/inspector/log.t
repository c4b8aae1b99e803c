  $ . "$TESTDIR/setup.sh"
  $ export TZ=UTC
  $ hex() { echo "$2" | inspect encode --partial --to hex "$1" 2>/dev/null; }
  $ head='platformtype: UNKNOW serial'
  $ call='state: RADIO_CALL_ACTIVE index: 1 toa: 129 ismpty: false ismt: true als: false isvoice: true isvoiceprivacy: false numberpresentation: 0 name: "" namepresentation: 0'
  $ cat >packets <<PACKETS
  > 1000000000.000001 > Dial $(hex Dial "$head: 1 address: \"112\" clir: CLIR_DEFAULT")
  > 1000000000.250001 < NoResultResponse $(hex NoResultResponse "$head: 1 error: RADIO_E_SUCCESS")
  > 1000000001.5 = - 00
  > 1000000060 < CallRingInd 08
  > 1000000061 > NoParmRequest $(hex NoParmRequest "$head: 2")
  > 1000000061.001 < GetCurrentCallsResponse $(hex GetCurrentCallsResponse "$head: 2 error: RADIO_E_SUCCESS calls { $call number: \"5551\" } calls { $call number: \"5552\" }")
  > 1000000062 > Hangup $(hex Hangup "$head: 3 gsmindex: 1")
  > 1000000063 < NoResultResponse $(hex NoResultResponse "$head: 9 error: RADIO_E_BUSY")
  > 1000000064 < NoResultResponse $(hex NoResultResponse "$head: 1 error: RADIO_E_SIM_BUSY")
  > 1000000065 < GetVoiceRadioTechResponse 0800100718002063
  > 1000000066 < QServiceStatusInfoList 5001
  > 1000000067 > Nonesuch 0800
  > 1000000068 < CallRingInd 00ff
  > PACKETS
  $ "$TESTDIR/make_capture.py" <packets >log.pcap
  $ inspect log log.pcap
