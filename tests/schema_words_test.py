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


class SharedCodes(unittest.TestCase):
    def test_units_say_the_same_of_the_same_code(self):
        with open(DESCRIPTOR_SET, "rb") as stream:
            files = descriptor_pb2.FileDescriptorSet.FromString(stream.read()).file
        texts = {}
        for file in files:
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
