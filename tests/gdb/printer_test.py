#!/usr/bin/python3
"""Has gdb print messages of every type, out of a process and out of its core file.

Usage: printer_test.py SUBJECT LIBRARY PRINTER DESCRIPTOR_SET

SUBJECT is the program built from subject.cc, PRINTER the script as it is installed. Exits 77, skipped,
without gdb or where it may not watch a process.
"""
import os
import pathlib
import re
import shutil
import struct
import subprocess
import sys
import tempfile
import unittest

os.environ["PROTOCOL_BUFFERS_PYTHON_IMPLEMENTATION"] = "python"
TESTS = pathlib.Path(__file__).resolve().parents[1]
sys.path[:0] = [str(TESTS / "interop"), str(TESTS / "golden")]
# pylint: disable=wrong-import-position
import random_exchange
import samples
import schema
from google.protobuf.descriptor import FieldDescriptor
from google.protobuf.message_factory import MessageFactory

SUBJECT, LIBRARY, PRINTER, DESCRIPTOR_SET = sys.argv[1:]
HIDDEN = {field.full_name for message in schema.load(DESCRIPTOR_SET).messages
          for field in message.fields if field.is_subscriber_data}
TYPES = random_exchange.load(DESCRIPTOR_SET)
CLASSES = MessageFactory()
ESCAPES = {ord(char): f"\\{letter}" for char, letter in ('""', "\\\\", "\nn", "\tt")}
# Not in the schema of any type: a number, and a group with a string in it.
UNKNOWN = bytes.fromhex("f8 7f 07 fb 7f 0a 01 35 fc 7f")

# What gdb runs: as a person would type it, but for all messages.
SESSION = """
set print object on
set print elements 200
python
gdb.set_convenience_variable("show_subscriber_data", {shown})
for index in range({count}):
    gdb.execute(f"print *messages[{{index}}]")
end
"""
# Then in the process, the two that follow: a Dial, and a long list.
PARTICULAR = """
set var ((Dial*)messages[{dial}])->_impl_.address_.tagged_ptr_.ptr_ = 8
print *(Dial*)messages[{dial}]
print *messages[{dial} + 1]
set print elements unlimited
print *messages[{dial} + 1]
"""


def alone(message, field: FieldDescriptor):
    """A copy with this field and no other."""
    copy = type(message)()
    copy.CopyFrom(message)
    for other in message.DESCRIPTOR.fields:
        if other.name != field.name:
            copy.ClearField(other.name)
    return copy


def text_of(message, shown: bool, unknown: str = "") -> str:
    """What gdb has to show of it."""
    words = []
    for field, value in sorted(message.ListFields(), key=lambda pair: pair[0].index):
        hidden = not shown and field.full_name in HIDDEN
        if field.label == field.LABEL_REPEATED:
            text = f"[{', '.join(text_of_value(field, element, shown, hidden) for element in value)}]"
        else:
            text = text_of_value(field, value, shown, hidden)
        words.append(f"{field.name} = {text}")
    return f"{message.DESCRIPTOR.full_name} {{{', '.join(words + ([unknown] if unknown else []))}}}"


def text_of_value(field: FieldDescriptor, value, shown: bool, hidden: bool) -> str:
    if field.cpp_type == field.CPPTYPE_MESSAGE:
        return text_of(value, shown)
    if field.cpp_type == field.CPPTYPE_STRING:
        text = "".join(ESCAPES.get(byte) or (chr(byte) if 31 < byte < 127 else f"\\{byte:03o}")
                       for byte in value)
        return f"<{len(value)} bytes>" if hidden else f'"{text}"'
    if field.cpp_type == field.CPPTYPE_BOOL:
        return "true" if value else "false"
    if field.cpp_type == field.CPPTYPE_ENUM:
        return field.enum_type.values_by_number[value].name
    return "<masked>" if hidden else str(value)


class Printer(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        kinds = {kind.full_name: CLASSES.GetPrototype(kind) for kind in TYPES}
        golden = [kinds[sample.message].FromString(sample.data) for path in TESTS.glob("golden/*.txt")
                  for sample in samples.read(path)]
        cls.messages = golden + [alone(m, field) for m in golden for field, _ in m.ListFields()
                                 if len(m.ListFields()) == len(m.DESCRIPTOR.fields)]
        particular = [kinds["Dial"](address=b"", serial=1),
                      kinds["RepeatUintResultIndication"](result=range(300))]
        scratch = tempfile.TemporaryDirectory()
        cls.addClassCleanup(scratch.cleanup)
        cls.scratch = pathlib.Path(scratch.name)
        # A copy of the script where gdb looks for it by itself.
        cls.scripts = cls.scratch / "auto-load"
        script = cls.scripts / (os.path.realpath(LIBRARY)[1:] + "-gdb.py")
        script.parent.mkdir(parents=True)
        shutil.copy(PRINTER, script)
        cls.core = cls.scratch / "core"
        with open(cls.scratch / "records", "wb") as records:
            for message in cls.messages + particular:
                data = message.SerializePartialToString() + UNKNOWN
                data += b"\x20" + b"\xff" * 9 + b"\1" if message is particular[0] else b""  # clir: -1
                for part in (message.DESCRIPTOR.full_name.encode(), data):
                    records.write(struct.pack("<I", len(part)) + part)

    def gdb(self, shown: bool, *session: str, then: str = "") -> list[str]:
        """What it says of each message, and of those that the lines after them print."""
        script = self.scratch / "session"
        script.write_text(SESSION.format(shown=int(shown), count=len(self.messages)) + then,
                          encoding="ascii")
        result = subprocess.run(
            ["gdb", "-nx", "-batch", "-iex", f"set auto-load safe-path {self.scripts}",
             "-iex", f"set auto-load scripts-directory {self.scripts}",
             *(word for line in session for word in ("-ex", line)), "-x", script, SUBJECT],
            capture_output=True, text=True, check=False)
        if "ptrace" in result.stderr:
            self.skipTest(result.stderr)
        # gdb tells the class that a pointer led to.
        texts = re.findall(r"^\$\d+ = (?:\([\w:]+\) )?(.*)", result.stdout, re.MULTILINE)
        self.assertGreaterEqual(len(texts), len(self.messages), result.stdout[-2000:] + result.stderr)
        return texts

    def test_process_and_core(self):
        run = f"run <{self.scratch / 'records'} >/dev/null"
        *texts, damaged, cut, whole = self.gdb(
            False, run, "frame function main", f"generate-core-file {self.core}",
            then=PARTICULAR.format(dial=len(self.messages)))
        self.assert_texts(texts, False, "unknown fields = <2047 (3 bytes), 2047 (7 bytes)>")
        self.assertRegex(damaged, r"Dial \{serial = 1, address = <Cannot access memory at .*>, unknown "
                         r"fields = <2047 \(3 bytes\), 2047 \(7 bytes\), clir = -1>\}")
        self.assertIn("198, 199, ...]", cut)
        self.assertIn("298, 299]", whole)
        texts = self.gdb(True, f"core-file {self.core}", "frame function main")
        self.assert_texts(texts, True, r'unknown fields = "\370\177\a\373\177\n\0015\374\177"')

    def assert_texts(self, texts: list[str], shown: bool, unknown: str) -> None:
        self.assertEqual(len(texts), len(self.messages))
        for message, text in zip(self.messages, texts):
            self.assertEqual(text, text_of(message, shown, unknown))


if __name__ == "__main__":
    if not shutil.which("gdb"):
        print("printer_test: skipped, gdb is missing: scripts/setup test")
        sys.exit(77)
    unittest.main(argv=sys.argv[:1])
