#!/usr/bin/python3
"""What the schema says beside the wire: who decides on subscriber data, and one text for one code.

Usage: schema_words_test.py DESCRIPTOR_SET
"""
import pathlib
import subprocess
import sys
import tempfile
import unittest

from google.protobuf import descriptor_pb2

ROOT = pathlib.Path(__file__).resolve().parent.parent
LISTS = ROOT / "proto" / "virtual_modem"
DESCRIPTOR_SET = sys.argv.pop(1)
# Names of strings that name no one: networks, the card and its files, versions, states.
PUBLIC_STRINGS = set("alphalong alphashort numeric registeredplmn smscpdu mcc mnc urns aid applabel atr "
                     "path versioncode versionname broadcastflag type seqno callmode".split())
# Names of numbers that tell a place, or that are the digits and bytes of a short message.
PERSONAL_NUMBERS = set("lac cid bsic psc ci pci tac cpid nci networkid systemid basestationid longitude "
                       "latitude digits bearerdata".split())


def read_descriptor_set():
    with open(DESCRIPTOR_SET, "rb") as stream:
        return descriptor_pb2.FileDescriptorSet.FromString(stream.read()).file


class SubscriberData(unittest.TestCase):
    def check(self, masked: str = "{}", shown: str = "{}") -> str:
        """What the build says of the lists, each put into its pattern."""
        with tempfile.TemporaryDirectory() as scratch:
            paths = []
            for name, pattern in (("subscriber_data.txt", masked),
                                  ("not_subscriber_data.txt", shown)):
                paths.append(pathlib.Path(scratch, name))
                paths[-1].write_text(pattern.format((LISTS / name).read_text("ascii")), "ascii")
            result = subprocess.run(
                [sys.executable, ROOT / "src/messages/check_subscriber_data.py", DESCRIPTOR_SET,
                 *paths], capture_output=True, text=True, check=False)
        self.assertEqual(bool(result.stderr), result.returncode != 0)
        return result.stderr

    def test_every_field_is_decided_once(self):
        self.assertEqual(self.check(), "")
        self.assertIn("Dial.address: in neither list", self.check(masked=""))
        self.assertIn("virtualdata.proto.SlaveSetupDataCallResponse.value1: in neither list",
                      self.check(shown=""))
        for words, change in [
                ("Dial.address: in both lists", {"shown": "{}Dial.address\n"}),
                ("Dial.address: twice", {"masked": "{}Dial.address\n"}),
                ("Dial.adress: no string or integer field", {"masked": "{}Dial.adress\n"}),
                ("Dial.clir: no string or integer field", {"shown": "{}Dial.clir # a flag\n"}),
        ]:
            with self.subTest(words):
                self.assertIn(words, self.check(**change))


    # A field moved to the other list by mistake is decided once, too.
    def test_what_is_personal_by_its_name_is_masked(self):
        personal = set()
        for file in read_descriptor_set():
            for message in file.message_type:
                for field in message.field:
                    place = message.name.startswith("Cell") and field.name in ("value12", "value13")
                    if (field.name not in PUBLIC_STRINGS if field.type == field.TYPE_STRING
                            else place or field.name in PERSONAL_NUMBERS):
                        personal.add(f"{file.package}.{message.name}.{field.name}".lstrip("."))
        masked = (LISTS / "subscriber_data.txt").read_text("ascii").split("\n")
        self.assertEqual(personal - set(masked), {"EmergencyNumber.number"})


class SharedCodes(unittest.TestCase):
    def test_units_say_the_same_of_the_same_code(self):
        texts = {}
        for file in read_descriptor_set():
            for place in file.source_code_info.location:
                if len(place.path) == 4 and place.path[0] == 5:  # a value of an enumeration
                    enum = file.enum_type[place.path[1]]
                    comment = place.leading_comments or place.trailing_comments
                    number = enum.value[place.path[3]].number
                    texts.setdefault(enum.name, {})[number] = " ".join(comment.split())
        for ours, theirs in (("Radio_Errno", "Qti_Radio_Errno"),
                             ("LastCallFailCause", "QtiCallFailCause")):
            shared = texts[ours].keys() & texts[theirs].keys()
            self.assertIn(25, shared)
            for number in shared:
                self.assertEqual(texts[ours][number], texts[theirs][number], f"{ours} {number}")


if __name__ == "__main__":
    unittest.main()
