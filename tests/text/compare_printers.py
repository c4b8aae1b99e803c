#!/usr/bin/python3
"""Holds libvirtual-modem-text to the Python package and to the full C++ runtime.

Usage: compare_printers.py PACKAGE_DIR LIBRARY_PRINTER FULL_PRINTER DESCRIPTOR_SET IMPLEMENTATION
         [--count N] [--seed N]

Random messages of every type, as in tests/interop/random_exchange.py. Text that shows all must be letter
for letter that of the full runtime; masked text, masked bytes and missing fields those of the package,
which masks by reflection and prints with google.protobuf.text_format. Bytes that are no message must say
where they break. FULL_PRINTER may be '-'. IMPLEMENTATION of google.protobuf: installed or python. --seed
(or the environment's SEED) repeats a run.
"""
import argparse
import contextlib
import doctest
import os
import pathlib
import random
import re
import struct
import subprocess
import sys

parser = argparse.ArgumentParser()
parser.add_argument("package_dir", type=pathlib.Path)
parser.add_argument("library_printer")
parser.add_argument("full_printer")
parser.add_argument("descriptor_set")
parser.add_argument("implementation", choices=["installed", "python"])
parser.add_argument("--count", type=int, default=4000)
parser.add_argument("--seed", type=int, default=os.environ.get("SEED", random.randrange(2**32)))
options = parser.parse_args()

if options.implementation == "python":
    os.environ["PROTOCOL_BUFFERS_PYTHON_IMPLEMENTATION"] = "python"
sys.path[:0] = [str(options.package_dir), str(pathlib.Path(__file__).resolve().parents[1] / "interop")]
# pylint: disable=wrong-import-position
import virtual_modem  # first: the other would choose the implementation
from virtual_modem import radio_pb2 as radio
from google.protobuf import descriptor_pb2, text_format
from google.protobuf.internal import api_implementation
import random_exchange

ACCEPTED, WRITTEN, LINE, LINES, MASKED_LINE, MASKED_BYTES, MISSING = range(7)
BROKEN = re.compile(r"(?:^|\s)# malformed at byte (\d+)[^#\n]*$")
READS_ANY_STRING = api_implementation.Type() != "python"

failures = 0


def hold(what: str, ours, theirs, subject: str = "") -> None:
    global failures
    if ours == theirs:
        return
    failures += 1
    if failures <= 5:
        print(f"{what} {subject}\n  ours   {ours!r}\n  theirs {theirs!r}")


@contextlib.contextmanager
def without_stderr():
    """The installed implementation writes a line whenever it meets a string that is not UTF-8."""
    sys.stderr.flush()
    kept = os.dup(2)
    with open(os.devnull, "wb") as nowhere:
        os.dup2(nowhere.fileno(), 2)
    try:
        yield
    finally:
        os.dup2(kept, 2)
        os.close(kept)


class Generator(random_exchange.Generator):
    """Half of the strings are UTF-8, with characters of one to four bytes."""

    def bytes(self) -> bytes:
        if self.chance(0.5):
            return super().bytes()
        return "".join(self.rng.choices("5+\"\\\n\0\x7fé€😀", k=self.rng.choice([0, 1, 5, 40]))).encode()


def ask(command: list, questions: list, answers: int) -> list:
    """So many records for each pair of type name and bytes."""
    request = b"".join(struct.pack("<I", len(part)) + part
                       for name, data in questions for part in (name.encode(), data))
    reply = subprocess.run(command, input=request, stdout=subprocess.PIPE, check=True).stdout
    records, at = [], 0
    while at < len(reply):
        size, = struct.unpack_from("<I", reply, at)
        records.append(reply[at + 4:at + 4 + size])
        at += 4 + size
    if len(records) != answers * len(questions):
        raise ValueError(f"{len(questions)} questions, {len(records)} records")
    return [records[i:i + answers] for i in range(0, len(records), answers)]


def compare(name: str, records: list) -> bool:
    """Whether the message could be compared with the package's."""
    line, lines, masked_line, missing = (
        records[i].decode("ascii") for i in (LINE, LINES, MASKED_LINE, MISSING))
    try:
        message = virtual_modem.TYPES[name].FromString(records[WRITTEN])
    except UnicodeDecodeError:
        hold("UTF-8 is not insisted on", READS_ANY_STRING, False, name)
        return False
    # The installed implementation keeps 32 bits of an undeclared number, the library all: such a
    # message is another one here.
    if message.SerializePartialToString() != records[WRITTEN]:
        return False
    subject = f"{name} {records[WRITTEN].hex(' ')}"

    def text(one, **arguments) -> str:
        return virtual_modem.to_text(one, max_bytes=0, **arguments)
    hold("missing fields", sorted(message.FindInitializationErrors()), sorted(missing.splitlines()),
         subject)
    hold("masked", text(message), masked_line, subject)
    hold("masked, in lines", " ".join(map(str.strip, text(message, single_line=False).splitlines())),
         masked_line, subject)
    masked = virtual_modem.mask(message)
    # The installed implementation writes an unknown 0 in one byte, however long it was.
    again = type(message).FromString(records[MASKED_BYTES]).SerializePartialToString()
    hold("mask()", masked.SerializePartialToString(), again, subject)
    hold("changed by mask()", message.SerializePartialToString(), records[WRITTEN], subject)
    if "# unknown" not in masked_line:  # text_format prints unknown fields in its own way
        hold("shown", text(message, show_subscriber_data=True), line, subject)
        hold("shown, in lines", text(message, show_subscriber_data=True, single_line=False), lines,
             subject)
    if not READS_ANY_STRING:  # nor does text_format
        masked.DiscardUnknownFields()
        hold("read back", text_format.Parse(masked_line, type(message)()), masked, subject)
    return True


def nested(wrappers: str, data: bytes = b"\x08\x01") -> bytes:
    """Data in unknown fields inside one another: groups (g) and what may be messages (m)."""
    for wrapper in reversed(wrappers):
        data = b"\x7b" + data + b"\x7c" if wrapper == "g" else b"\x7a" + bytes([len(data)]) + data
    return data


def messages() -> None:
    types = random_exchange.load(options.descriptor_set)
    hold("types", sorted(virtual_modem.TYPES), sorted(kind.full_name for kind in types))
    generator = Generator(random.Random(options.seed))
    questions = [(kind.full_name, generator.message(kind))
                 for kind in (types[i % len(types)] for i in range(options.count))]
    questions += [("Dial", nested(wrappers)) for depth in range(8, 14)
                  for wrappers in ("g" * depth, "m" * depth, "m" + "g" * depth, "g" * depth + "mm")]
    questions += [("Dial", nested("m", none))  # looks like a field, and is none
                  for none in (b"\0\1", b"\6\1", b"\x0c", b"\x0d\1\0\0", b"\x09" + b"\0" * 7)]
    # Each byte in a string so long that its bytes are looked at eight at a time.
    questions += [("Dial", b"\x1a\x10" + b"5" * 11 + bytes([byte]) + b"5" * 4)
                  for byte in range(256)]
    whole = []
    for (name, data), records in zip(questions, ask([options.library_printer], questions, 7)):
        if records[ACCEPTED] == b"1":
            whole.append((name, records))
            continue
        for text in (record.decode("ascii").rstrip() for record in records[LINE:MASKED_BYTES]):
            found = BROKEN.search(text)
            hold("where they break", bool(found) and int(found[1]) <= len(data), True, data.hex(" "))
    compared = sum(compare(name, records) for name, records in whole)
    print(f"seed {options.seed}, {api_implementation.Type()}: {compared} of {len(whole)} compared")
    hold("enough compared", compared > (0.9 if READS_ANY_STRING else 0.3) * len(whole), True)
    if options.full_printer != "-":
        texts = ask([options.full_printer, options.descriptor_set],
                    [(name, records[WRITTEN]) for name, records in whole], 3)
        for (name, records), (*theirs, written) in zip(whole, texts):
            # Its reflection, too, keeps 32 bits of an undeclared number.
            if written == records[WRITTEN]:
                hold("the full runtime", records[LINE:MASKED_LINE], theirs, f"{name} {written.hex(' ')}")


def particular() -> None:
    dial = radio.Dial(platformtype=radio.MTK, serial=7, address="+861012345678", clir=radio.CLIR_DEFAULT)
    whole = 'platformtype: MTK serial: 7 address: "+861012345678" clir: CLIR_DEFAULT'

    def cut(max_bytes: int) -> str:
        return virtual_modem.to_text(dial, show_subscriber_data=True, max_bytes=max_bytes)
    hold("a text that just fits", cut(len(whole)), whole)
    hold("cut text", cut(60), whole[:40] + " [... 31 more bytes]")
    hold("no more than a mark", cut(1), " [... 71 more bytes]")
    dial.address = "5" * 5000
    hold("as long as by default", len(virtual_modem.to_text(dial)), 4000)

    hold("examples in its documentation fail", doctest.testmod(virtual_modem).failed, 0)
    hold("its version is the project's", f'\nversion = "{virtual_modem.__version__}"\n'
         in (options.package_dir / "pyproject.toml").read_text(encoding="utf-8"), True)
    hold("type checkers may read it",
         pathlib.Path(virtual_modem.__file__).with_name("py.typed").exists(), True)
    foreign = descriptor_pb2.FileDescriptorProto(name="+861012345678")
    hold("a foreign message", virtual_modem.to_text(foreign), "# a message of another library")
    try:
        hold("a foreign message is masked", virtual_modem.mask(foreign), None)
    except TypeError as error:
        hold("its name is told", "google.protobuf.FileDescriptorProto" in str(error), True)


with without_stderr():
    messages()
    particular()
print(f"{failures} differences")
sys.exit(1 if failures else 0)
