#!/usr/bin/python3
"""Holds what libvirtual-modem-text prints and masks to two independent implementations.

Usage: compare_printers.py LIBRARY_PRINTER FULL_PRINTER DESCRIPTOR_SET SUBSCRIBER_DATA
         [--count N] [--seed N]

Random messages of every type, as in tests/interop/random_exchange.py. Of each, shown in full, the
library's text must be letter for letter that of the full C++ runtime, and, where there is no unknown
field, that of Python, whose parser must read it back as the same message. Masked text and masked bytes
must be those of the message that Python masked by SUBSCRIBER_DATA, missing fields those that Python
finds. Bytes that are no message must say where they break. FULL_PRINTER may be '-': then only Python is
compared with. --seed (or the environment's SEED) repeats a run.
"""
import argparse
import os
import pathlib
import random
import re
import struct
import subprocess
import sys

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parent.parent / "interop"))
# pylint: disable=wrong-import-position
import random_exchange  # first: it chooses Python's own implementation
from google.protobuf import message_factory, text_format
from google.protobuf.message import Message

NOT_SHOWN = re.compile(r"(?:^| )# \d+ unknown fields?, \d+ bytes, not shown$")
BROKEN = re.compile(r"(?:^|\s)# malformed at byte (\d+)[^#\n]*$")


def ask(command: list[str], questions: list[tuple[str, bytes]], answers: int) -> list[list[bytes]]:
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


def mask(message: Message, subscriber_data: set[str]) -> None:
    for field, value in message.ListFields():
        repeated = field.label == field.LABEL_REPEATED
        if f"{field.containing_type.full_name}.{field.name}" in subscriber_data:
            def masked(one):
                return b"X" * len(one) if isinstance(one, bytes) else 0
            if repeated:
                value[:] = [masked(one) for one in value]
            else:
                setattr(message, field.name, masked(value))
        elif field.message_type is not None:
            for one in value if repeated else [value]:
                mask(one, subscriber_data)


class Comparison:
    def __init__(self, subscriber_data: set[str]):
        self.subscriber_data = subscriber_data
        self.failures = 0
        self.compared = {"full runtime": 0, "Python": 0, "masked": 0, "broken": 0}

    def hold(self, what: str, name: str, data: bytes, ours, theirs) -> None:
        if ours == theirs:
            return
        self.failures += 1
        if self.failures <= 5:
            print(f"{name}: {what}\n  bytes  {data.hex(' ')}\n  ours   {ours}\n  theirs {theirs}")

    def broken(self, name: str, data: bytes, texts: list[str]) -> None:
        for text in texts:
            found = BROKEN.search(text)
            self.hold("does not say where the bytes break", name, data, text,
                      text if found and int(found[1]) <= len(data) else None)
        self.compared["broken"] += 1

    def message(self, kind: type, data: bytes, records: list[bytes]) -> None:
        name = kind.DESCRIPTOR.full_name
        line, lines, masked_line = (record.decode("ascii") for record in records[:3])
        masked_bytes, missing = records[3], records[4].decode("ascii").splitlines()
    
        message = kind()
        message.MergeFromString(data)
        self.hold("missing fields", name, data, sorted(missing),
                  sorted(message.FindInitializationErrors()))

        known = kind()
        known.CopyFrom(message)
        known.DiscardUnknownFields()
        if known == message and known.ByteSize() == len(data):
            self.hold("one line, Python", name, data, line,
                      text_format.MessageToString(message, as_one_line=True))
            self.hold("lines, Python", name, data, lines, text_format.MessageToString(message))
            self.hold("read back", name, data, text_format.Parse(line, kind()), message)
            self.compared["Python"] += 1

        mask(known, self.subscriber_data)
        self.hold("masked bytes", name, data, masked_bytes, known.SerializePartialToString())
        self.hold("masked text", name, data, NOT_SHOWN.sub("", masked_line),
                  text_format.MessageToString(known, as_one_line=True))
        self.hold("masked text read back", name, data, text_format.Parse(masked_line, kind()), known)
        self.hold("says that something is not shown", name, data,
                  bool(NOT_SHOWN.search(masked_line)), message.ByteSize() != self.size_known(message))
        self.compared["masked"] += 1

    @staticmethod
    def size_known(message: Message) -> int:
        known = type(message)()
        known.CopyFrom(message)
        known.DiscardUnknownFields()
        return known.ByteSize()


def main() -> None:
    parser = argparse.ArgumentParser()
    parser.add_argument("library_printer")
    parser.add_argument("full_printer")
    parser.add_argument("descriptor_set")
    parser.add_argument("subscriber_data", type=pathlib.Path)
    parser.add_argument("--count", type=int, default=4000)
    parser.add_argument("--seed", type=int,
                        default=os.environ.get("SEED", random.randrange(2**32)))
    options = parser.parse_args()
    print(f"seed {options.seed}")

    generator = random_exchange.Generator(random.Random(options.seed))
    types = random_exchange.load(options.descriptor_set)
    factory = message_factory.MessageFactory()
    classes = {descriptor.full_name: factory.GetPrototype(descriptor) for descriptor in types}
    questions = [(descriptor.full_name, generator.message(descriptor))
                 for descriptor in (types[i % len(types)] for i in range(options.count))]
    lines = options.subscriber_data.read_text(encoding="utf-8").splitlines()
    comparison = Comparison({line.split("#")[0].strip() for line in lines} - {""})

    messages = []
    for (name, data), records in zip(questions, ask([options.library_printer], questions, 7)):
        if records[0] == b"1":
            messages.append((name, records[1], records[2:]))
            comparison.message(classes[name], records[1], records[2:])
        else:
            comparison.broken(name, data, [record.decode("ascii").rstrip() for record in records[2:5]])
    if options.full_printer != "-":
        texts = ask([options.full_printer, options.descriptor_set],
                    [(name, data) for name, data, _ in messages], 3)
        for (name, data, records), (*theirs, written) in zip(messages, texts):
            # Its reflection keeps 32 bits of an undeclared number, where the library and the full
            # runtime's compiled classes keep all: such a message is another one there.
            if written == data:
                comparison.hold("the full runtime", name, data, records[:2], theirs)
                comparison.compared["full runtime"] += 1

    counts = ", ".join(f"{what}: {count}" for what, count in comparison.compared.items())
    print(f"{options.count} random inputs of {len(types)} types; compared with {counts}; "
          f"{comparison.failures} differences")
    if comparison.failures:
        sys.exit(1)


if __name__ == "__main__":
    main()
