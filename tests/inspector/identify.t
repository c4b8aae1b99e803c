  $ . "$TESTDIR/setup.sh"

A long message is one type only:

  $ inspect identify card.bin | head -n 4
  1. IccCardStatusResponse
     fits: fully parsed, initialized, no unknown fields, values in range, 4 of 4 fields present
  2. ImsiForAppResponse
     initialized, control characters in a string, 4 of 4 fields present

A short one fits many; twins are on one line:

  $ echo 0800102a1801 | inspect identify | sed -n '2p; 5p; 11,$p'
     fits: fully parsed, initialized, no unknown fields, values in range, 3 of 3 fields present
  1. IntParmRequest = Hangup = ImsCallRatIndicationInd = ImsRegistrationInfoInd (twins: one layout)
  10 types are first: the bytes do not tell them apart.
  96 more types fit less well (--all shows them).

What speaks against a type ranks it lower:

  $ inspect identify --all --hex 08011063 | sed -n 's|^.*[.] ||; /CellIdentityCdma$/p; /UusInfo$/,+1p'
  CellIdentityCdma
  UusInfo
     undeclared values: 1, 1 of 3 fields present, a record within other messages
  $ echo 0800 f83f01 | inspect identify | head -n 2
  1. NoResultIndication
     unknown fields: 1, 1 of 1 fields present
  $ for bytes in 0c ''; do xxd -r -p <<<"$bytes" | inspect identify --from binary; done
  virtual-modem-inspect: standard input: no message of the schema has these bytes
  virtual-modem-inspect: standard input: there are no bytes to identify
  [1]

  $ echo 0a0141 | inspect identify --all | sed -n '1,6p'
  1. CellIdentityOperatorNames
     fits: fully parsed, initialized, no unknown fields, values in range, 1 of 2 fields present, a record within other messages
  2. CdmaNumberInfoRecord
     fits: fully parsed, initialized, no unknown fields, values in range, 1 of 5 fields present, a record within other messages
  2. Participant
     fits: fully parsed, initialized, no unknown fields, values in range, 1 of 5 fields present, a record within other messages
  $ echo 0801 1201ff 120101 | inspect identify --all | sed -n '2p; 4p'
     initialized, control characters in a string, 2 of 2 fields present
     initialized, not the bytes that the library writes, control characters in a string, 2 of 2 fields present
