  $ . "$TESTDIR/setup.sh"
  $ schema() { (echo 'syntax = "proto2";'; cat) >unit.proto; "$PROTOC" --descriptor_set_out=set unit.proto 2>&1; }
  $ inspect() { "$INSPECT" --schema set "$@"; }

Without comments, fields tell what kind a message is; of the names of one number the first is printed:

  $ schema <<'PROTO'
  > package some.where;
  > enum Low { option allow_alias = true; NONE = -300; LEAST = -1; SAME = -1; ZERO = 0; ALSO = 0; TOP = 255; OVER = 256; }
  > message Ask { required int32 serial = 2; repeated Low low = 255; }
  > message Answer { required int32 serial = 1; required Low error = 3; }
  > message Told { optional bool so = 1; optional uint32 much = 2; optional Ask ask = 9; }
  > PROTO
  $ echo 'serial: 2 low: [NONE, LEAST, SAME, ZERO, ALSO, TOP, OVER]' | inspect encode Ask >ask
  $ inspect decode --json Ask ask | tr -d '\n '
  {"serial":2,"low":["NONE","LEAST","LEAST","ZERO","ZERO","TOP","OVER"]} (no-eol)
  $ printf '%s\n' 'Ask serial: 1' 'Answer serial: 1 error: OVER' 'Told much: 4294967295 so: true' | inspect log --json | cut -d, -f 2-5,8-
  "direction":"to modem","type":"some.where.Ask","unit":"unit","kind":"request","message":{"serial":1}}
  "direction":"to telephony","type":"some.where.Answer","unit":"unit","kind":"response","message":{"serial":1,"error":"OVER"}}
  "direction":"to telephony","type":"some.where.Told","unit":"unit","kind":"indication","much":4294967295}}
  $ printf '%s\n' some.where.Ask.serial ' # none' 'some.where.Told.much # why' >subscriber_data.txt
  $ echo '1002 4a021001' | inspect decode --redact --trust-type Told
  much: 0
  ask {
    serial: 0
  }

Types and numbers that a later schema may have:

  $ schema <<'PROTO'
  > enum Low { ZERO = 0; LEAST = -1; }
  > message Wide {
  >   optional int64 a = 1; optional uint64 b = 2; repeated bytes c = 3; repeated Low d = 4;
  >   required string e = 60; optional int64 f = 20000; required bool g = 536870911;
  > }
  > PROTO
  $ rm subscriber_data.txt
  $ inspect encode Wide - >wide <<'TEXT'
  > a: -9223372036854775808 b: 18446744073709551615 c: "\377" c: "X" d: LEAST d: ZERO
  > e: "5" f: 7 g: true
  > TEXT
  $ inspect decode Wide wide | head -n 4
  a: -9223372036854775808
  b: 18446744073709551615
  c: "\377"
  c: "X"
  $ inspect decode --json Wide wide | tee wide.json | sed -n '2,6p; 12,13p'
   "a": "-9223372036854775808",
   "b": "18446744073709551615",
   "c": [
    "/w==",
    "WA=="
   "e": "5",
   "f": "7",
  $ inspect encode --json Wide wide.json | cmp - wide
  $ inspect decode Wide --hex '80fa01 07 8801 01' 2>/dev/null | head -n 4
  4000: 7
  17: 1
  # unknown field 4000 at byte 0, varint, 4 bytes with its tag
  # unknown field 17 at byte 4, varint, 3 bytes with its tag
  $ printf 'Wide.e\nWide.f\nWide.c\n' >subscriber_data.txt
  $ inspect decode --redact --trust-type Wide wide | grep -v -e d: -e [abg]:
  c: "X"
  c: "X"
  e: "X"
  f: 0

What the tools cannot show is refused:

  $ rm subscriber_data.txt
  $ while read -r text; do
  >   echo "$text" | schema; inspect list
  > done <<'SCHEMAS'
  > message M { optional double a = 1; }
  > message M { optional int32 a23456789012345678901234567890123 = 1; }
  > message M { message N {} optional N a = 1; }
  > SCHEMAS
  virtual-modem-inspect: the schema's field M.a is a double, unlike any of a virtual modem
  virtual-modem-inspect: the schema's field M.a23456789012345678901234567890123 has a name over 32 letters, unlike any of a virtual modem
  virtual-modem-inspect: the schema's field M.a has a type declared within a message, unlike any of a virtual modem
  [1]
  $ for count in 2048 2049; do
  >   for i in $(seq $count); do echo "message M$i {}"; done | schema; inspect list | wc -l
  > done
  2048
  virtual-modem-inspect: the schema has too many messages
  0
  $ for kind in Low Ask; do
  >   schema <<PROTO
  > enum Low { ZERO = 0; }
  > message Ask { optional $kind a = 1; }
  > PROTO
  >   echo Ask.a >subscriber_data.txt
  >   inspect list
  > done
  virtual-modem-inspect: the schema's field Ask.a is subscriber data that has no mask, unlike any of a virtual modem
  virtual-modem-inspect: the schema's field Ask.a is subscriber data that has no mask, unlike any of a virtual modem
  [1]
