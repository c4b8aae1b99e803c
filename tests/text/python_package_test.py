#!/usr/bin/python3
"""Holds the Python package to the C++ companion library, with random messages of every type.

Usage: python_package_test.py PACKAGE_DIR LIBRARY_PRINTER DESCRIPTOR_SET IMPLEMENTATION [--count N] [--seed N]

Messages as in tests/interop/random_exchange.py; LIBRARY_PRINTER tells what the C++ library makes of
them. IMPLEMENTATION of google.protobuf: installed or python. --seed (or the environment's SEED) repeats
a run.
"""
import argparse
import contextlib
import doctest
import os
import pathlib
import random
import sys

parser = argparse.ArgumentParser()
parser.add_argument("package_dir")
parser.add_argument("library_printer")
parser.add_argument("descriptor_set")
parser.add_argument("implementation", choices=["installed", "python"])
parser.add_argument("--count", type=int, default=4000)
parser.add_argument("--seed", type=int, default=os.environ.get("SEED", random.randrange(2**32)))
options = parser.parse_args()

if options.implementation == "python":
    os.environ["PROTOCOL_BUFFERS_PYTHON_IMPLEMENTATION"] = "python"
here = pathlib.Path(__file__).resolve().parent
sys.path[:0] = [options.package_dir, str(here), str(here.parent / "interop")]
# pylint: disable=wrong-import-position
import virtual_modem  # first: the other two would choose the implementation
from virtual_modem import radio_pb2 as radio
from google.protobuf import descriptor_pb2, text_format
from google.protobuf.internal import api_implementation
import compare_printers
import random_exchange

ACCEPTED, WRITTEN, LINE, LINES, MASKED_LINE, MASKED_BYTES, MISSING = range(7)
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
        return "".join(self.rng.choices("5+\"\\\n\0é€😀", k=self.rng.choice([0, 1, 5, 40]))).encode()


def compare(name: str, records: list) -> bool:
    """Whether the message could be compared."""
    line, lines, masked_line = (records[i].decode("ascii") for i in (LINE, LINES, MASKED_LINE))
    kind = virtual_modem.TYPES[name]
    try:
        message = kind.FromString(records[WRITTEN])
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
    hold("shown", text(message, show_subscriber_data=True), line, subject)
    hold("shown, in lines", text(message, show_subscriber_data=True, single_line=False), lines, subject)
    hold("masked", text(message), masked_line, subject)
    masked = virtual_modem.mask(message)
    hold("mask()", masked.SerializePartialToString(), records[MASKED_BYTES], subject)
    hold("changed by mask()", message.SerializePartialToString(), records[WRITTEN], subject)
    hidden = compare_printers.NOT_SHOWN.search(masked_line)
    hold("masked, in lines", text(message, single_line=False),
         text(masked, show_subscriber_data=True, single_line=False)
         + (hidden[0].lstrip() + "\n" if hidden else ""), subject)
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
    answers = compare_printers.ask([options.library_printer], questions, 7)
    whole = [(name, records) for (name, _), records in zip(questions, answers)
             if records[ACCEPTED] == b"1"]
    compared = sum(compare(name, records) for name, records in whole)
    print(f"seed {options.seed}, {api_implementation.Type()}: {len(whole)} messages, {compared} compared")
    least = 0.9 if READS_ANY_STRING else 0.4
    hold("enough compared", compared > least * len(whole), True)


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
    hold("parsed by the runtime", text_format.Parse(virtual_modem.to_text(dial, max_bytes=0), radio.Dial()),
         virtual_modem.mask(dial))

    hold("examples in its documentation fail", doctest.testmod(virtual_modem).failed, 0)
    foreign = descriptor_pb2.FileDescriptorProto(name="+861012345678")
    hold("a foreign message", virtual_modem.to_text(foreign), "# a message of another library")
    try:
        hold("a foreign message is masked", virtual_modem.mask(foreign), None)
    except TypeError as error:
        hold("its name is told", "google.protobuf.FileDescriptorProto" in str(error), True)

    try:
        dial.ParseFromString(b"\x1a\x02\xff5")
        hold("a string that is not UTF-8", dial.address, b"\xff5")
        hold("its text", virtual_modem.to_text(dial, show_subscriber_data=True), r'address: "\3775"')
        hold("its mask", virtual_modem.mask(dial).address, "XX")
        hold("written again", dial.SerializePartialToString(), b"\x1a\x02\xff5")
    except UnicodeDecodeError:
        hold("UTF-8 is not insisted on", READS_ANY_STRING, False)
    try:
        dial.address = b"\xff5"
        hold("a string that is not UTF-8 is set", dial.address, None)
    except ValueError:
        pass


with without_stderr():
    messages()
    particular()
print(f"{failures} differences")
sys.exit(1 if failures else 0)
