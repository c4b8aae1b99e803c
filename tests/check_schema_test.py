#!/usr/bin/python3
"""Changes copies of the schema and asks scripts/check-schema what it thinks of them.

Usage: check_schema_test.py        (needs protoc, or PROTOC in the environment)
"""
import pathlib
import re
import shutil
import subprocess
import tempfile
import unittest

ROOT = pathlib.Path(__file__).resolve().parent.parent
RADIO = "virtual_modem/radio.proto"


class CheckSchema(unittest.TestCase):
    def check(self, *replacements: tuple[str, str], file: str = RADIO) -> str:
        """What it complains of once each pattern is replaced by the text; nothing: it passes."""
        with tempfile.TemporaryDirectory() as scratch:
            proto = pathlib.Path(scratch) / "proto"
            shutil.copytree(ROOT / "proto", proto)
            self.edit(proto / file, *replacements)
            return self.run_on(proto)

    def edit(self, path: pathlib.Path, *replacements: tuple[str, str]) -> None:
        text = path.read_text(encoding="utf-8")
        for pattern, new in replacements:
            text, count = re.subn(pattern, new, text, flags=re.DOTALL)
            self.assertEqual(count, 1, f"{pattern} has to stand once in {path}")
        path.write_text(text, encoding="utf-8")

    def run_on(self, proto: pathlib.Path, *options: str) -> str:
        result = subprocess.run([ROOT / "scripts" / "check-schema", f"--proto={proto}", *options],
                                capture_output=True, text=True, check=False)
        self.assertEqual(bool(result.stderr), result.returncode != 0)
        print(result.stderr, end="")
        return result.stderr

    def test_breaks_are_named(self):
        for words, *change in [
                ("field Dial.clir: number 4 became 9", ("Clir clir = 4;", "Clir clir = 9;")),
                ("field NrSignalStrength.ssrsrp: type int32 became uint32",
                 ("int32 ssrsrp", "uint32 ssrsrp")),
                ("field Dial.clir: label required became optional",
                 ("required Clir clir = 4;", "optional Clir clir = 4;")),
                ("value LastCallFailCause.BUSY was renamed to USER_BUSY",
                 ("  BUSY = 17;", "  USER_BUSY = 17;")),
                ("message SetMute was removed",
                 (r"message SetMute \{.*?\n\}\n", "")),
                ("field UusInfo.uusdata was removed", ("optional string uusdata = 3;", "")),
                ("field Dial.added was added as required",
                 ("Clir clir = 4;", "Clir clir = 4; required bool added = 6;")),
                ("enum SmsAckFailCause: first MEMORY_CAPACITY_EXCEEDED became ADDED",
                 ("enum SmsAckFailCause \\{", "enum SmsAckFailCause { ADDED = 5;")),
                ("field UusInfo.uusdata: oneof none became data",
                 ("optional string uusdata = 3;", "oneof data { string uusdata = 3; }")),
                ("file virtual_modem/radio.proto: runtime lite_runtime became speed",
                 ("option optimize_for = LITE_RUNTIME;", "")),
        ]:
            with self.subTest(words):
                self.assertIn(words, self.check(*change))

    def test_default_is_part_of_the_contract(self):
        self.assertIn('joinedcallid: default -1 became 0',
                      self.check((r'\[default = "-1"\]', '[default = "0"]'),
                                 file="virtual_modem/conference.proto"))

    def test_what_a_message_declares_inside_it(self):
        with tempfile.TemporaryDirectory() as scratch:
            proto = pathlib.Path(scratch) / "proto"
            proto.mkdir()
            file = proto / "nested.proto"
            file.write_text("""syntax = "proto2";
message Outer {
  message Inner { enum State { OFF = 0; ON = 1; } optional State state = 1; }
  optional Inner inner = 1;
}
""", encoding="utf-8")
            released = f"--released={scratch}/released.txt"
            self.assertEqual(self.run_on(proto, released, "--accept"), "")
            self.edit(file, ("state = 1", "state = 2"), ("ON = 1", "ON = 3"))
            complaints = self.run_on(proto, released)
        self.assertIn("field Outer.Inner.state: number 1 became 2", complaints)
        self.assertIn("value Outer.Inner.State.ON: number 1 became 3", complaints)

    def test_additions_and_comments_pass(self):
        self.assertEqual(self.check(
            ("Clir clir = 4;", "Clir clir = 4; optional bool added = 6;  // A comment."),
            ("  BUSY = 17;", "  ADDED = 5;\n  BUSY = 17;"),
            ("message SetMute \\{", "message Added { required bool added = 1; }\nmessage SetMute {"),
        ), "")


if __name__ == "__main__":
    unittest.main()
