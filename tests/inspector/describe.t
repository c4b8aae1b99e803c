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

What there is none of:

  $ for what in RADIO_E_SIM_BUZY Dail 123456 -7 99999999999 Dial.nosuch Dial. zzzzzzzzzz; do
  >   inspect describe "$what"
  > done
  virtual-modem-inspect: nothing is called RADIO_E_SIM_BUZY; did you mean RADIO_E_SIM_BUSY, RADIO_E_SIM_FULL or RADIO_E_SIM_PUK2?
  virtual-modem-inspect: nothing is called Dail; did you mean Call, Dial or aid?
  virtual-modem-inspect: 123456 is a value of none of the 53 enumerations
  virtual-modem-inspect: -7 is a value of none of the 53 enumerations
  virtual-modem-inspect: nothing is called 99999999999
  virtual-modem-inspect: nothing is called Dial.nosuch
  virtual-modem-inspect: nothing is called Dial.; did you mean Dial?
  virtual-modem-inspect: nothing is called zzzzzzzzzz
  [1]

Lists, complete:

  $ inspect list | wc -l
  122
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
