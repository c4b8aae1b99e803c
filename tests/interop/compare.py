#!/usr/bin/python3
"""Holds the library and its companion to Python on random messages of every type.

Usage: compare.py PEER DESCRIPTOR_SET PACKAGE_DIR IMPLEMENTATION [--count N] [--seed N]

PEER is the program built from peer.cc, IMPLEMENTATION of google.protobuf installed or python. The latter
must agree on what is accepted, what is initialized, and on the bytes written again. Text, masks and
missing fields must be those of the Python package, which masks by reflection and prints with
google.protobuf.text_format. Bytes that are no message must say where they break. A failure prints the
bytes; --seed (or the environment's SEED) repeats a run.
"""
import argparse
import doctest
import os
import pathlib
import random
import re
import sys

parser = argparse.ArgumentParser()
parser.add_argument("peer")
parser.add_argument("descriptor_set")
parser.add_argument("package_dir", type=pathlib.Path)
parser.add_argument("implementation", choices=["installed", "python"])
parser.add_argument("--count", type=int, default=5000)
parser.add_argument("--seed", type=int, default=os.environ.get("SEED", random.randrange(2**32)))
options = parser.parse_args()

if options.implementation == "python":
    os.environ["PROTOCOL_BUFFERS_PYTHON_IMPLEMENTATION"] = "python"
sys.path.insert(0, str(options.package_dir))
# pylint: disable=wrong-import-position
import virtual_modem  # first: the other would choose the implementation
from virtual_modem import radio_pb2 as radio
from google.protobuf import descriptor_pb2, message_factory, text_format
from google.protobuf.internal import api_implementation
from google.protobuf.message import DecodeError, Message
import peer
import random_exchange

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


def exchange(kind: type, data: bytes) -> peer.Answer:
    """What Python makes of the bytes as a class whose strings are bytes."""
    parsed = kind()
    try:
        parsed.ParseFromString(data)
    except DecodeError:
        return peer.Answer(False, False, b"")
    return peer.Answer(True, parsed.IsInitialized(), parsed.SerializePartialToString())


def compare(name: str, answer: peer.Answer) -> bool:
    """Whether the message could be compared with the package's."""
    try:
        message = virtual_modem.TYPES[name].FromString(answer.data)
    except UnicodeDecodeError:
        hold("UTF-8 is not insisted on", READS_ANY_STRING, False, name)
        return False
    # The installed implementation keeps 32 bits of an undeclared number, the library all: such a
    # message is another one here.
    if message.SerializePartialToString() != answer.data:
        return False
    subject = f"{name} {answer.data.hex(' ')}"
    line, lines, masked_line, _, missing = (text.decode("latin-1") for text in answer.texts)

    def text(one: Message, **arguments) -> str:
        return virtual_modem.to_text(one, max_bytes=0, **arguments)
    hold("missing fields", sorted(message.FindInitializationErrors()),
         sorted(missing.splitlines()), subject)
    hold("masked", text(message), masked_line, subject)
    hold("masked, in lines", " ".join(map(str.strip, text(message, single_line=False).splitlines())),
         masked_line, subject)
    masked = virtual_modem.mask(message)
    # The installed implementation writes an unknown 0 in one byte, however long it was.
    again = type(message).FromString(answer.texts.masked).SerializePartialToString()
    hold("mask()", masked.SerializePartialToString(), again, subject)
    hold("changed by mask()", message.SerializePartialToString(), answer.data, subject)
    if "# unknown" not in masked_line:  # text_format prints unknown fields in its own way
        hold("shown", text(message, show_subscriber_data=True), line, subject)
        hold("shown, in lines", text(message, show_subscriber_data=True, single_line=False),
             lines, subject)
    if not READS_ANY_STRING:  # nor does text_format
        masked.DiscardUnknownFields()
        hold("read back", text_format.Parse(masked_line, type(message)()), masked, subject)
    return True


def messages() -> None:
    types = random_exchange.load(options.descriptor_set)
    hold("types", sorted(virtual_modem.TYPES), sorted(kind.full_name for kind in types))
    factory = message_factory.MessageFactory()
    classes = {kind.full_name: factory.GetPrototype(kind) for kind in types}
    generator = random_exchange.Generator(random.Random(options.seed))
    questions = [(kind.full_name, generator.message(kind))
                 for kind in (types[i % len(types)] for i in range(options.count))]
    # Each byte in a string so long that its bytes are looked at eight at a time.
    questions += [("Dial", b"\x1a\x10" + b"5" * 11 + bytes([byte]) + b"5" * 4)
                  for byte in range(256)]
    answers = peer.ask(options.peer, questions)
    # The installed implementation writes a line whenever it meets a string that is not UTF-8.
    sys.stderr = sys.stdout
    os.dup2(os.open(os.devnull, os.O_WRONLY), 2)
    whole = compared = 0
    for (name, data), answer in zip(questions, answers):
        if not READS_ANY_STRING:
            hold("exchanged", answer, exchange(classes[name], data), f"{name} {data.hex(' ')}")
        if answer.accepted:
            whole += 1
            compared += compare(name, answer)
            continue
        for text in answer.texts[:3]:
            found = BROKEN.search(text.decode("ascii").rstrip())
            hold("where they break", bool(found) and int(found[1]) <= len(data), True, data.hex(" "))
    print(f"seed {options.seed}, {api_implementation.Type()}: {compared} of {whole} compared")
    hold("enough compared", compared > (0.9 if READS_ANY_STRING else 0.3) * whole, True)


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


messages()
particular()
print(f"{failures} differences")
sys.exit(1 if failures else 0)
