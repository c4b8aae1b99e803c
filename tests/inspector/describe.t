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
  $ inspect describe 0xF001
  LastCallFailCause: OEM_CAUSE_1 = 61441  on the wire 81e003
        Platform-specific cause 1 (0xF001).
  QtiCallFailCause: VIR_OEM_CAUSE_1 = 61441  on the wire 81e003
        Platform-specific cause 1 (0xF001).
  $ inspect describe RADIO_E_SIM_BUSY
  Radio_Errno: RADIO_E_SIM_BUSY = 51  on the wire 33
        The card is busy; retry later.
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
  $ inspect describe virtualdata.proto.MasterSlaveNetworkInfoResp.value2
  field virtualdata.proto.MasterSlaveNetworkInfoResp.value2
    required uint32 value2 = 2  tag 10
        Meaning agreed between the devices; carried unchanged.
  $ inspect describe joinedcallid
  field EconfResultIndication.joinedcallid
    optional string joinedcallid = 6  tag 32
        Identifier of the call that joined the conference, as text; "-1" when none. While absent it reads as "-1" and is not serialized; clearing it brings "-1" back.

In the words of a log, and as bytes of the wire:

  $ for what in 'LastCallFailCause 17' Dial.clir=2 0x2af9 fa55 'fa 55' 'cause 17' 'error: RADIO_E_SIM_BUSY' serial=4 'clir 1' RADIO_NOT_REGISTERED \
  >     0X2af9 -0x1 Dial.uusinfo.uustype=2 'Dial.uusinfo 1' 'Technology: 3;' RAT=3 'tech 3'; do
  >   inspect describe $what | head -n 6
  > done
  LastCallFailCause: BUSY = 17  on the wire 11
        Q.850 17: the called party is busy.
  Clir: CLIR_SUPPRESSION = 2  on the wire 02
        CLIR is suppressed: the number is shown.
  LastCallFailCause: CAUSE_VIRTUAL_MODEM_SESSION_UNAVALIBLE = 11001  on the wire f955
        Virtual modem: the call is refused because there is no session to the remote device. The spelling is part of the contract.
  LastCallFailCause: CAUSE_VIRTUAL_MODEM_CALL_CAPABILITY_UNAVALIBLE = 11002  on the wire fa55
        Virtual modem: the call is refused because the remote device cannot carry calls. The spelling is part of the contract.
  LastCallFailCause: CAUSE_VIRTUAL_MODEM_CALL_CAPABILITY_UNAVALIBLE = 11002  on the wire fa55
        Virtual modem: the call is refused because the remote device cannot carry calls. The spelling is part of the contract.
  LastCallFailCause: BUSY = 17  on the wire 11
        Q.850 17: the called party is busy.
  RegistrationFailCause: NETWORK_FAILURE = 17  on the wire 11
        Fault in the network.
  QtiCallFailCause: VIR_BUSY = 17  on the wire 11
        Q.850 17: the called party is busy.
  Radio_Errno: RADIO_E_SIM_BUSY = 51  on the wire 33
        The card is busy; retry later.
  field NoResultResponse.serial
    required int32 serial = 2  tag 10
        Serial of the request answered.
  field BoolResultResponse.serial
    required int32 serial = 2  tag 10
        Serial of the request answered.
  Clir: CLIR_INVOCATION = 1  on the wire 01
        CLIR is invoked: the number is hidden.
  RadioPrlIndicator: RADIO_NOT_REGISTERED = -1  on the wire ffffffffffffffffff01
        Not registered. A negative number: ten bytes on the wire.
  LastCallFailCause: CAUSE_VIRTUAL_MODEM_SESSION_UNAVALIBLE = 11001  on the wire f955
        Virtual modem: the call is refused because there is no session to the remote device. The spelling is part of the contract.
  RadioPrlIndicator: RADIO_NOT_REGISTERED = -1  on the wire ffffffffffffffffff01
        Not registered. A negative number: ten bytes on the wire.
  UusType: TYPE1_NOT_REQUIRED = 2  on the wire 02
        Service 1; the call goes on without it.
  field Dial.uusinfo
    repeated UusInfo uusinfo = 5  tag 2a
        User-to-user signaling to send; usually none or one.
  Technology: RADIO_T_UMTS = 3  on the wire 03
        UMTS (WCDMA).
  Technology: RADIO_T_UMTS = 3  on the wire 03
        UMTS (WCDMA).
  Technology: RADIO_T_UMTS = 3  on the wire 03
        UMTS (WCDMA).
  QRadioTechType: QIMS_GPRS = 3  on the wire 03
        GSM packet data.

What there is none of:

  $ for what in RADIO_E_SIM_BUZY Dail 123456 -7 99999999999 Dial.nosuch Dial. zzzzzzzzzz Dial.clr 'Dial.clir 9' 'Clir CLIR_INVOKATION' 'LastCallFale 17' '[' 'Dial[.clir' 0x-1 '- 5' 2147483648 -2147483648 fa80 'cause 99999' 'cause BUZY' 'Clir 0X' Clir= 'rat.x 1'; do
  >   inspect describe -- "$what"
  > done
  virtual-modem-inspect: nothing is called RADIO_E_SIM_BUZY; did you mean RADIO_E_SIM_BUSY, RADIO_E_SIM_FULL or RADIO_E_SIM_PUK2?
  virtual-modem-inspect: nothing is called Dail; did you mean Call, Dial or aid?
  virtual-modem-inspect: 123456 is a value of none of the 53 enumerations
  virtual-modem-inspect: -7 is a value of none of the 53 enumerations
  virtual-modem-inspect: nothing is called 99999999999
  virtual-modem-inspect: nothing is called Dial.nosuch
  virtual-modem-inspect: nothing is called Dial.; did you mean Dial, Dial.address or Dial.clir?
  virtual-modem-inspect: nothing is called zzzzzzzzzz
  virtual-modem-inspect: nothing is called Dial.clr; did you mean Dial.clir?
  virtual-modem-inspect: 9 is not a value of Clir
  virtual-modem-inspect: CLIR_INVOKATION is not a value of Clir; did you mean CLIR_INVOCATION?
  virtual-modem-inspect: nothing is called LastCallFale; did you mean LastCallFailCause?
  virtual-modem-inspect: nothing is called [
  virtual-modem-inspect: nothing is called Dial[.clir; did you mean Dial.clir?
  virtual-modem-inspect: nothing is called 0x-1
  virtual-modem-inspect: nothing is called -
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

  $ inspect list | wc -l
  122
  $ inspect list enums | grep Clir
  Clir  radio  Whether the caller's number is shown to the called party
  $ inspect list enums | wc -l
  53
  $ inspect list fields | wc -l
  578
  $ inspect list fields | grep virtualdata.proto.SlaveMasterShareData
  virtualdata.proto.SlaveMasterShareDataChange.result  data_share  Meaning agreed between the devices
  virtualdata.proto.SlaveMasterShareDataChange.text  data_share  Meaning agreed between the devices
  $ inspect list values | wc -l
  912
  $ inspect list values | grep -w RADIO_E_SIM_BUSY
  RADIO_E_SIM_BUSY  radio  The card is busy
  $ inspect list | grep -w Dial
  Dial  radio  Request to set up an outgoing call
