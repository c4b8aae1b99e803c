  $ . "$TESTDIR/setup.sh"

A long message is one type only:

  $ inspect identify card.bin | head -n 4
  1. IccCardStatusResponse
     fits: fully parsed, initialized, no unknown fields, values in range, 4 of 4 fields present
  2. ImsiForAppResponse
     initialized, control characters in a string, 4 of 4 fields present

A short one fits many; twins are on one line:

  $ echo 0800102a1801 | inspect identify
  1. NoResultResponse
     fits: fully parsed, initialized, no unknown fields, values in range, 3 of 3 fields present
  1. BoolParmRequest = SetMute (twins: one layout)
     fits: fully parsed, initialized, no unknown fields, values in range, 3 of 3 fields present
  1. IntParmRequest = Hangup = ImsCallRatIndicationInd = ImsRegistrationInfoInd (twins: one layout)
     fits: fully parsed, initialized, no unknown fields, values in range, 3 of 3 fields present
  1. HandoverInfo = virtualdata.proto.SlaveDeactivateDataCallRequest (twins: one layout)
     fits: fully parsed, initialized, no unknown fields, values in range, 3 of 3 fields present
  1. ConferenceCapability
     fits: fully parsed, initialized, no unknown fields, values in range, 3 of 3 fields present
  10 types are first: the bytes do not tell them apart.
  96 more types fit less well (--all shows them).

What speaks against a type ranks it lower:

  $ inspect identify --all --hex 08011063 | grep -A 1 '^20'
  20. UusInfo
     undeclared values: 1, 1 of 3 fields present, a record within other messages
  20. RadioNrVopsInfo
     undeclared values: 1, 1 of 3 fields present, a record within other messages
  $ echo 0800 f83f01 | inspect identify | head -n 2
  1. NoResultIndication
     unknown fields: 1, 1 of 1 fields present
  $ echo 0c | inspect identify
  virtual-modem-inspect: standard input: no message of the schema has these bytes
  [1]
  $ : | inspect identify
  virtual-modem-inspect: standard input: there are no bytes to identify
  [1]

  $ echo 0a0141 | inspect identify --all | sed -n '1,10p; $p'
  1. CellIdentityOperatorNames
     fits: fully parsed, initialized, no unknown fields, values in range, 1 of 2 fields present, a record within other messages
  2. CdmaNumberInfoRecord
     fits: fully parsed, initialized, no unknown fields, values in range, 1 of 5 fields present, a record within other messages
  2. Participant
     fits: fully parsed, initialized, no unknown fields, values in range, 1 of 5 fields present, a record within other messages
  4. CellIndentityGsm = CellIndentityWcdma (twins: one layout)
     fits: fully parsed, initialized, no unknown fields, values in range, 1 of 11 fields present, a record within other messages
  4. CellIndentityTdscdma
     fits: fully parsed, initialized, no unknown fields, values in range, 1 of 11 fields present, a record within other messages
     required fields missing: 4, 1 of 6 fields present, a record within other messages
  $ echo 0801 1201ff 120101 | inspect identify --all | head -n 4
  1. ImsCallInfoIndicationInd
     initialized, control characters in a string, 2 of 2 fields present
  2. Version
     initialized, not the bytes that the library writes, control characters in a string, 2 of 2 fields present
  $ echo 0800 1085808000 1803 | inspect identify | sed -n 2p
     initialized, not the bytes that the library writes, 3 of 3 fields present
