#!/usr/bin/python3
"""What the schema must hold to, and what is said to who breaks it: src/schema, scripts/check-schema.

Usage: schema_test.py DESCRIPTOR_SET        (needs protoc, or PROTOC in the environment)
"""
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile
import unittest

from google.protobuf import descriptor_pb2

import schema

ROOT = pathlib.Path(__file__).resolve().parent.parent
DESCRIPTOR_SET = sys.argv.pop(1)
# Names of strings that name no one: networks, the card and its files, versions, states.
PUBLIC_STRINGS = set("alphalong alphashort numeric registeredplmn smscpdu mcc mnc urns aid applabel atr "
                     "path versioncode versionname broadcastflag type seqno callmode".split())
# Names of numbers that tell a place, or that are the digits and bytes of a short message.
PERSONAL_NUMBERS = set("lac cid bsic psc ci pci tac cpid nci networkid systemid basestationid longitude "
                       "latitude digits bearerdata".split())

SOUND = """// A license line, not the comment of the file.

// Test unit.
syntax = "proto2";
package a.b;
option optimize_for = LITE_RUNTIME;

// ---- Kinds ----

// Kind of an Ask.
enum Kind {
  KIND_NONE = 0;  // None.
  KIND_LEAST = -1;  // Below none.
}

// ---- Messages ----

// Request to ask.
// Answered
// by a Reply.
message Ask {
  optional Kind kind = 1;  // Kind.
  optional string text = 2048 [default = "-1"];  // Text.
  repeated int64 moments = 536870911;  // Moments.
}

// Response to answer Ask.
message Reply {
  optional bytes text = 1;  // How it is said is agreed between the sides.
}

// Request without more. Its response is agreed between the sides.
message Order {}
"""
# What a contributor may add to it by mistake, the line that is named, and what is said of it.
MISTAKES = [
    ("// Sent to no end.\nmessage Unkind {}", "message Unkind",
     "Unkind: its comment does not name its kind; begin it with Request, "),
    ("message Silent {}", "message Silent", "Silent: has no comment; say its kind first ("),
    ("enum Still {\n  STILL = 0;  // It is.\n}", "enum Still",
     "Still: has no comment; say what the enumeration tells"),
    ("// Request. Answered by a Reply.\nmessage Deaf {}", "message Deaf",
     "Deaf: is answered by Reply, whose comment does not say so; name Deaf in the comment of Reply"),
    ("// Request. Answered by a Replay.\nmessage Typo {}", "message Typo",
     "Typo: is answered by Replay, which is no message; correct the name"),
    ("// Request to wait.\nmessage Wait {}", "message Wait",
     "Wait: its comment names no answer; write 'answered by NAME' or 'the sides agree on it'"),
    ("// Response to Order.\nmessage Late {}", "message Late",
     "Late: answers Order, whose comment does not say so; write 'answered by Late' there"),
    ("// Record.\nmessage Open {\n  optional int32 open = 1;  // It is.\n}", "int32 open",
     "a.b.Open.open: nobody decided whether it is subscriber data; add it to subscriber_data.txt, or "),
    ("// Record.\nmessage Bare {\n  optional bool bare = 1;\n}", "bool bare",
     "Bare.bare: has no comment; say meaning, unit, range and sentinel"),
    ("// Record.\nmessage Real {\n  optional double real = 1;  // It is.\n}", "double real",
     "Real.real: its type double is one that the tools do not show; take one of "),
    ("// Record.\nmessage Plan {\n  map<bool, bool> plan = 1;  // It is.\n}", "message Plan",
     "Plan: declares messages, groups or maps inside, which the tables do not hold; declare messages "),
    ("// Record.\nmessage Tight {\n  repeated bool tight = 1 [packed = true];  // It is.\n}",
     "bool tight", "Tight.tight: is packed, but lists are written unpacked here; leave out"),
    ("// Record.\nmessage Either {\n  oneof one {\n    bool other = 1;  // It is.\n  }\n}", "message Either",
     "Either: declares oneofs inside, which the tables do not hold; declare messages "),
    ("// Record.\nmessage Case {\n  optional bool case = 1;  // It is.\n}", "bool case",
     "Case.case: name fields in lower-case letters and digits"),
    ("// Record.\nmessage Dash {\n  optional bool dash = 1;  // Long \u2013 and wide.\n}", "bool dash",
     "Dash.dash: its comment has '\u2013'; write it in ASCII"),
]
LISTS = {"subscriber_data.txt": "# One a line\na.b.Ask.text # why\na.b.Ask.txt\na.b.Ask.text\n",
         "not_subscriber_data.txt": "a.b.Ask.moments\na.b.Reply.text\na.b.Ask.kind\na.b.Ask.text\n"}
LIST_FAULTS = [
    "subscriber_data.txt:3: a.b.Ask.txt: the schema has no such field; correct or delete it",
    "subscriber_data.txt:4: a.b.Ask.text: is in subscriber_data.txt:2 already; keep one line",
    "not_subscriber_data.txt:3: a.b.Ask.kind: Kind names no one; delete the line",
    "not_subscriber_data.txt:4: a.b.Ask.text: is in subscriber_data.txt:2 already; keep one line",
]
# Breaks of what was released: what is replaced in which unit, and what is said of it.
BREAKS = [
    ("radio", "Clir clir = 4;", "Clir clir = 9;", "field Dial.clir: number 4 became 9: "),
    ("radio", "int32 ssrsrp", "uint32 ssrsrp", "field NrSignalStrength.ssrsrp: type int32 became uint32: "),
    ("radio", "required string dtmf", "optional string dtmf",
     "field SendBurstDtmf.dtmf: label required became optional: "),
    ("radio", "  BUSY = 17;", "  USER_BUSY = 17;",
     "value LastCallFailCause.BUSY was renamed to USER_BUSY: "),
    ("radio", r"(// [^\n]*\n)+message SetMute \{.*?\n\}\n", "", "message SetMute was removed: "),
    ("radio", r"message Hangup \{", "message Hangup { required bool added = 9;  // New.\n",
     "field Hangup.added was added as required: "),
    ("radio", r"enum SmsAckFailCause \{", "enum SmsAckFailCause { ADDED = 5;  // New.\n",
     "enum SmsAckFailCause: first MEMORY_CAPACITY_EXCEEDED became ADDED: "),
    ("radio", "// Record([^\n]*\n(?://[^\n]*\n)*message UusInfo)", r"// Indication\1",
     "message UusInfo: role record became indication: "),
    ("conference", r'\[default = "-1"\]', '[default = "0"]',
     "field EconfResultIndication.joinedcallid: default -1 became 0: "),
]
ADDITIONS = [
    ("radio", "Clir clir = 4;[^\n]*", r"\g<0> optional bool added = 20000;  // New."),
    ("radio", "  BUSY = 17;", "  ADDED = 5;  // New.\n  BUSY = 17;"),
    ("conference", r"\Z", "// Record: new.\nmessage Added { required bool added = 1;  // New.\n}\n"),
]


class Case(unittest.TestCase):
    def setUp(self):
        scratch = tempfile.TemporaryDirectory()
        self.addCleanup(scratch.cleanup)
        self.proto = pathlib.Path(scratch.name) / "proto"
        self.units = self.proto / "virtual_modem"

    def check(self, *options: str) -> list[str]:
        """The lines of its complaint."""
        result = subprocess.run([ROOT / "scripts/check-schema", f"--proto={self.proto}", *options],
                                capture_output=True, text=True, check=False)
        self.assertEqual(result.returncode, 1 if result.stderr else 0, result.stderr)
        return result.stderr.splitlines()

    def hold(self, said: list[str], wanted: list[str]) -> None:
        """Each complaint begins with what is wanted, and there is no other."""
        missed = [words for words in wanted if not any(line.startswith(words) for line in said)]
        self.assertEqual((missed, len(said)), ([], len(wanted)), "\n".join(said))


class Check(Case):
    def write(self, text: str, lists: dict[str, str]) -> None:
        self.units.mkdir(parents=True)
        (self.units / "test.proto").write_text(text, "utf-8")
        for name, lines in lists.items():
            (self.units / name).write_text(lines, "utf-8")

    def test_every_mistake_is_said_once(self):
        text = SOUND + "\n" + "\n\n".join(declaration for declaration, *_ in MISTAKES) + "\n"
        self.write(text, LISTS)
        lines = text.splitlines()
        wanted = [next(f"proto/virtual_modem/test.proto:{number}: {said}"
                       for number, line in enumerate(lines, 1) if place in line)
                  for _, place, said in MISTAKES]
        self.hold(self.check(), wanted + ["proto/virtual_modem/" + fault for fault in LIST_FAULTS])

    def test_units(self):
        self.write(SOUND.replace("// Test unit.\n", "").replace("option optimize", "// option optimize")
                   .replace("// A license line, not the comment of the file.\n", ""), LISTS)
        said = "\n".join(self.check())
        for words in ("test.proto:1: test: has no comment; say above 'syntax' what the unit is for",
                      "test.proto:1: test: its classes would need the full runtime; add 'option"):
            self.assertIn(words, said)

    def test_what_is_sound_is_accepted(self):
        self.write(SOUND, {"subscriber_data.txt": "a.b.Ask.text # why\na.b.Reply.text\n",
                           "not_subscriber_data.txt": "a.b.Ask.moments\n"})
        released = self.proto.parent / "released.txt"
        self.assertEqual(self.check("--accept", f"--released={released}"), [])
        promised = released.read_text()
        self.assertRegex(promised, r"^# release \d+\.\d+\.\d+\n")
        for line in ("a.b.Ask kind=message file=virtual_modem/test.proto role=request",
                     "a.b.Ask.text kind=field number=2048 label=optional type=string default=-1",
                     "a.b.Kind.KIND_LEAST kind=value number=-1"):
            self.assertIn(line + "\n", promised)


class Released(Case):
    def setUp(self):
        super().setUp()
        shutil.copytree(ROOT / "proto", self.proto)

    def edit(self, unit: str, pattern: str, new: str) -> None:
        path = self.units / f"{unit}.proto"
        text, count = re.subn(pattern, new, path.read_text("utf-8"), flags=re.DOTALL)
        self.assertEqual(count, 1, f"{pattern} has to stand once in {path}")
        path.write_text(text, "utf-8")

    def test_every_break_is_named(self):
        for unit, pattern, new, _ in BREAKS:
            self.edit(unit, pattern, new)
        for name in ("subscriber_data.txt", "not_subscriber_data.txt"):
            path = self.units / name
            path.write_text(re.sub(r"(?m)^SetMute\..*\n", "", path.read_text("utf-8")), "utf-8")
        self.hold(self.check(), [f"check-schema: {said}" for *_, said in BREAKS]
                  + [f"check-schema: breaks of what was released: {len(BREAKS)}"])

    def test_additions_pass(self):
        for addition in ADDITIONS:
            self.edit(*addition)
        self.assertEqual(self.check(), [])


class MessageList(unittest.TestCase):
    # By which a program tells that its headers are not those of the library.
    def test_a_new_field_of_any_message_changes_the_checksum(self):
        checksums = set()
        everything = descriptor_pb2.FileDescriptorSet.FromString(pathlib.Path(DESCRIPTOR_SET).read_bytes())
        changed = [file.message_type[0] for file in everything.file]
        changed += everything.file[0].message_type[-1:]
        with tempfile.TemporaryDirectory() as scratch:
            for message in changed:
                message.field.add(name="added", number=9999, label=1, type=8)
                pathlib.Path(scratch, "set").write_bytes(everything.SerializeToString())
                subprocess.run([sys.executable, ROOT / "src/messages/generate_message_list.py",
                                f"{scratch}/set", f"{scratch}/list"], check=True)
                checksums.add(pathlib.Path(scratch, "list").read_text("ascii").splitlines()[-1])
                message.field.pop()
        self.assertEqual(len(checksums), len(changed))


class Loaded(unittest.TestCase):
    # What pages show of it.
    def test_wire_and_references(self):
        everything = schema.load(DESCRIPTOR_SET)
        on_the_wire = {f.name: (f.tag, f.wire) for f in everything.find("QImsCall").fields}
        self.assertEqual(on_the_wire["number"], ("4a", "length"))
        self.assertEqual(on_the_wire["flag16"], ("80 01", "varint"))
        values = everything.find("RadioPrlIndicator").values
        self.assertEqual((values[0].number, values[0].wire), (-1, "ff" + 8 * " ff" + " 01"))
        self.assertEqual(everything.find("ImsParticipant").carried_by,
                         [("ImsConferenceParticipants", "participants")])


class Words(unittest.TestCase):
    # A field moved to the other list by mistake is decided once, too.
    def test_what_is_personal_by_its_name_is_masked(self):
        shown = []
        for message in schema.load(DESCRIPTOR_SET).messages:
            for field in message.fields:
                place = message.name.startswith("Cell") and field.name in ("value12", "value13")
                personal = (field.name not in PUBLIC_STRINGS if field.type == "string"
                            else place or field.name in PERSONAL_NUMBERS)
                if personal and not field.is_subscriber_data:
                    shown.append(field.full_name)
        self.assertEqual(shown, ["EmergencyNumber.number"])


if __name__ == "__main__":
    unittest.main()
