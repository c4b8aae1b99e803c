  $ . "$TESTDIR/setup.sh"

  $ VIRTUAL_MODEM_DESCRIPTOR_SET= inspect describe | head -n 1
  radio: 93 messages, 38 enumerations
  $ inspect describe Hangup | grep -v -e serial -e echoed -e ImsCall -e platform
  message Hangup  (unit radio)
    Request to end one call. Sent by the telephony side. Its response is agreed between the sides.
    Same bytes as IntParmRequest.
    Same bytes as ImsRegistrationInfoInd.
  
    required int32 gsmindex = 3  tag 18
        Call.index of the call to end; not validated.
  $ inspect describe CallRat | sed '3,6d'
  enum CallRat  (unit ims_service)
    Radio access technology that carries an IMS call, in QImsCall.
    2  CALL_RAT_WIFI  Voice or video over Wi-Fi.
    3  CALL_RAT_NR  Voice or video over 5G New Radio.
  $ inspect describe IccCardStatusResponse.cardstatus.base.applications[0].pin1 | head -n 1
  field AppStatus.pin1
  $ inspect describe joinedcallid | head -n 2
  field EconfResultIndication.joinedcallid
    optional string joinedcallid = 6  tag 32

As a log writes it:

  $ for what in 'LastCallFailCause 17' Dial.clir=2 'cause 17' 'error: RADIO_E_SIM_BUSY' -0x1 RAT=3 virtualdata.proto.MasterSlaveNetworkInfoResp.value2; do
  >   inspect describe $what | grep -v '^    ' | head -n 4
  > done
  LastCallFailCause: BUSY = 17  on the wire 11
  Clir: CLIR_SUPPRESSION = 2  on the wire 02
  LastCallFailCause: BUSY = 17  on the wire 11
  RegistrationFailCause: NETWORK_FAILURE = 17  on the wire 11
  QtiCallFailCause: VIR_BUSY = 17  on the wire 11
  Radio_Errno: RADIO_E_SIM_BUSY = 51  on the wire 33
  RadioPrlIndicator: RADIO_NOT_REGISTERED = -1  on the wire ffffffffffffffffff01
  Technology: RADIO_T_UMTS = 3  on the wire 03
  field virtualdata.proto.MasterSlaveNetworkInfoResp.value2
    required uint32 value2 = 2  tag 10

What there is none of:

  $ for what in RADIO_E_SIM_BUZY 123456 99999999999 Dial. Dial.clr 'Dial.clir 9' 'Clir CLIR_INVOKATION' 'Dial[.clir' 0x-1 2147483648 -2147483648 fa80 'cause BUZY' 'rat.x 1'; do
  >   inspect describe -- "$what"
  > done
  virtual-modem-inspect: nothing is called RADIO_E_SIM_BUZY; did you mean RADIO_E_SIM_BUSY, RADIO_E_SIM_FULL or RADIO_E_SIM_PUK2?
  virtual-modem-inspect: 123456 is not a value of any of the 53 enumerations
  virtual-modem-inspect: nothing is called 99999999999
  virtual-modem-inspect: nothing is called Dial.; did you mean Dial, Dial.address or Dial.clir?
  virtual-modem-inspect: nothing is called Dial.clr; did you mean Dial.clir?
  virtual-modem-inspect: 9 is not a value of Clir
  virtual-modem-inspect: CLIR_INVOKATION is not a value of Clir; did you mean CLIR_INVOCATION?
  virtual-modem-inspect: nothing is called Dial[.clir; did you mean Dial.clir?
  virtual-modem-inspect: nothing is called 0x-1
  virtual-modem-inspect: nothing is called 2147483648
  virtual-modem-inspect: -2147483648 is not a value of any of the 53 enumerations
  virtual-modem-inspect: nothing is called fa80
  virtual-modem-inspect: BUZY is not a value of any of the 4 enumerations that cause can be; did you mean BUSY?
  virtual-modem-inspect: nothing is called rat.x
  [1]

Lists, complete:

  $ while read -r list line; do
  >   [ $(inspect list $list | wc -l) = $(cat "$SOURCE"/proto/virtual_modem/*.proto | grep -cE "$line") ] || echo $list
  > done <<'END'
  > messages ^message
  > enums ^enum
  > fields ^  (required|optional|repeated)
  > values ^  [A-Za-z0-9_]+ = -?[0-9]
  > END
  $ inspect list fields | grep SlaveMasterShareDataChange.text
  virtualdata.proto.SlaveMasterShareDataChange.text  data_share  Meaning agreed between the devices
