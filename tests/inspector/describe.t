  $ . "$TESTDIR/setup.sh"

  $ inspect describe
  radio: 93 messages, 38 enumerations
  ims_service: 9 messages, 13 enumerations
  call_size: 1 messages, 1 enumerations
  conference: 8 messages, 1 enumerations
  data_share: 11 messages, 0 enumerations
  $ inspect describe 11002
  LastCallFailCause: CAUSE_VIRTUAL_MODEM_CALL_CAPABILITY_UNAVALIBLE = 11002  on the wire fa55
        Virtual modem: the call is refused because the remote device cannot carry calls. The spelling is part of the contract.
  $ inspect describe Hangup
  message Hangup  (unit radio)
    Request to end one call. Sent by the telephony side. Its response is agreed between the sides.
    Same bytes as IntParmRequest.
    Same bytes as ImsCallRatIndicationInd.
    Same bytes as ImsRegistrationInfoInd.
  
    required PlatformType platformtype = 1  tag 08
        Modem platform concerned.
    required int32 serial = 2  tag 10
        Chosen by the sender; echoed in the response.
    required int32 gsmindex = 3  tag 18
        Call.index of the call to end; not validated.
  $ inspect describe CallRat
  enum CallRat  (unit ims_service)
    Radio access technology that carries an IMS call, in QImsCall.
    Type of QImsCall.callrat.
  
    0  CALL_RAT_UNKNOW  Technology not known. The spelling is part of the contract.
    1  CALL_RAT_LTE  Voice or video over LTE.
    2  CALL_RAT_WIFI  Voice or video over Wi-Fi.
    3  CALL_RAT_NR  Voice or video over 5G New Radio.
  $ inspect describe IccCardStatusResponse.cardstatus.base.applications[0].pin1
  field AppStatus.pin1
    required PinState pin1 = 7  tag 38
        State of PIN1.
  $ inspect describe joinedcallid
  field EconfResultIndication.joinedcallid
    optional string joinedcallid = 6  tag 32
        Identifier of the call that joined the conference, as text; "-1" when none. While absent it reads as "-1" and is not serialized; clearing it brings "-1" back.

As a log writes it, and as bytes of the wire:

  $ for what in 'LastCallFailCause 17' Dial.clir=2 0x2afa 'fa 55' 'cause 17' 'error: RADIO_E_SIM_BUSY' 'clir 1' -0x1 Dial.uusinfo.uustype=2 \
  >     'Technology: 3;' RAT=3 virtualdata.proto.MasterSlaveNetworkInfoResp.value2; do
  >   inspect describe $what | grep -v '^    ' | head -n 4
  > done
  LastCallFailCause: BUSY = 17  on the wire 11
  Clir: CLIR_SUPPRESSION = 2  on the wire 02
  LastCallFailCause: CAUSE_VIRTUAL_MODEM_CALL_CAPABILITY_UNAVALIBLE = 11002  on the wire fa55
  LastCallFailCause: CAUSE_VIRTUAL_MODEM_CALL_CAPABILITY_UNAVALIBLE = 11002  on the wire fa55
  LastCallFailCause: BUSY = 17  on the wire 11
  RegistrationFailCause: NETWORK_FAILURE = 17  on the wire 11
  QtiCallFailCause: VIR_BUSY = 17  on the wire 11
  Radio_Errno: RADIO_E_SIM_BUSY = 51  on the wire 33
  Clir: CLIR_INVOCATION = 1  on the wire 01
  RadioPrlIndicator: RADIO_NOT_REGISTERED = -1  on the wire ffffffffffffffffff01
  UusType: TYPE1_NOT_REQUIRED = 2  on the wire 02
  Technology: RADIO_T_UMTS = 3  on the wire 03
  Technology: RADIO_T_UMTS = 3  on the wire 03
  field virtualdata.proto.MasterSlaveNetworkInfoResp.value2
    required uint32 value2 = 2  tag 10

What there is none of:

  $ for what in RADIO_E_SIM_BUZY Dail 123456 99999999999 Dial. Dial.clr 'Dial.clir 9' 'Clir CLIR_INVOKATION' '[' 'Dial[.clir' 0x-1 2147483648 -2147483648 fa80 'cause 99999' 'cause BUZY' 'Clir 0X' Clir= 'rat.x 1'; do
  >   inspect describe -- "$what"
  > done
  virtual-modem-inspect: nothing is called RADIO_E_SIM_BUZY; did you mean RADIO_E_SIM_BUSY, RADIO_E_SIM_FULL or RADIO_E_SIM_PUK2?
  virtual-modem-inspect: nothing is called Dail; did you mean Call, Dial or aid?
  virtual-modem-inspect: 123456 is a value of none of the 53 enumerations
  virtual-modem-inspect: nothing is called 99999999999
  virtual-modem-inspect: nothing is called Dial.; did you mean Dial, Dial.address or Dial.clir?
  virtual-modem-inspect: nothing is called Dial.clr; did you mean Dial.clir?
  virtual-modem-inspect: 9 is not a value of Clir
  virtual-modem-inspect: CLIR_INVOKATION is not a value of Clir; did you mean CLIR_INVOCATION?
  virtual-modem-inspect: nothing is called [
  virtual-modem-inspect: nothing is called Dial[.clir; did you mean Dial.clir?
  virtual-modem-inspect: nothing is called 0x-1
  virtual-modem-inspect: nothing is called 2147483648
  virtual-modem-inspect: -2147483648 is a value of none of the 53 enumerations
  virtual-modem-inspect: nothing is called fa80
  virtual-modem-inspect: 99999 is a value of none of the 4 enumerations that cause can be
  virtual-modem-inspect: BUZY is a value of none of the 4 enumerations that cause can be; did you mean BUSY?
  virtual-modem-inspect: 0X is not a value of Clir
  virtual-modem-inspect: nothing is called Clir=; did you mean Clir or clir?
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
  $ inspect list values | grep -w RADIO_E_SIM_BUSY
  RADIO_E_SIM_BUSY  radio  The card is busy
  $ inspect list fields | grep SlaveMasterShareDataChange.text
  virtualdata.proto.SlaveMasterShareDataChange.text  data_share  Meaning agreed between the devices
