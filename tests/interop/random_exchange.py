#!/usr/bin/python3
"""Random messages of every type between the library and Python's own implementation.

Usage: random_exchange.py PEER DESCRIPTOR_SET [--count N] [--seed N]

PEER is the program made from peer.cc. Both sides read the same random bytes: complete and incomplete
messages, undeclared enumeration numbers, unknown fields, wrong wire types, packed numbers, fields out
of order and twice, bytes cut off. They must agree on what is accepted, what is initialized, and on
the bytes written again; then each must read what the other wrote and write the same. A failure prints
the type and the bytes; --seed (or the environment's SEED) repeats a run.
"""
import argparse
import os
import random
import sys
import time

os.environ["PROTOCOL_BUFFERS_PYTHON_IMPLEMENTATION"] = "python"
# pylint: disable=wrong-import-position
from google.protobuf import descriptor_pb2, descriptor_pool, message, message_factory
from google.protobuf.descriptor import Descriptor, FieldDescriptor
from google.protobuf.internal import api_implementation

import peer

VARINT, FIXED64, BYTES, START, END, FIXED32 = range(6)
INTERESTING = [0, 1, 2, 127, 128, 255, 2**31 - 1, 2**31, 2**32 - 1, 2**32, 2**63, 2**64 - 1]


def varint(value: int) -> bytes:
    out = bytearray()
    while value > 0x7f:
        out.append(value & 0x7f | 0x80)
        value >>= 7
    out.append(value)
    return bytes(out)


class Generator:
    """Random bytes that mean something to a message type, more or less."""

    def __init__(self, rng: random.Random):
        self.rng = rng

    def chance(self, probability: float) -> bool:
        return self.rng.random() < probability

    def message(self, descriptor: Descriptor) -> bytes:
        """One message, with the faults that a whole message can have."""
        complete = self.chance(0.6)
        data = self.fields(descriptor, complete)
        if self.chance(0.1):
            return data[:self.rng.randrange(len(data) + 1)]
        return data

    def fields(self, descriptor: Descriptor, complete: bool) -> bytes:
        parts = []
        for field in descriptor.fields:
            if field.label == FieldDescriptor.LABEL_REPEATED:
                parts += self.repeated(field, complete)
            elif field.label == FieldDescriptor.LABEL_REQUIRED:
                if complete or self.chance(0.9):
                    parts.append(self.field(field, complete))
            elif self.chance(0.5):
                parts.append(self.field(field, complete))
            if parts and self.chance(0.02):
                parts.append(self.field(field, complete))  # again: the last one counts, or merges
        if self.chance(0.2):
            parts.append(self.unknown(descriptor))
        if self.chance(0.2):
            self.rng.shuffle(parts)
        return b"".join(parts)

    def repeated(self, field: FieldDescriptor, complete: bool) -> list[bytes]:
        count = self.rng.choice([0, 1, 1, 2, 3])
        if field.cpp_type in (field.CPPTYPE_INT32, field.CPPTYPE_UINT32) and self.chance(0.5):
            packed = b"".join(self.scalar(field) for _ in range(count))
            return [self.tag(field.number, BYTES) + varint(len(packed)) + packed]
        return [self.field(field, complete) for _ in range(count)]

    def field(self, field: FieldDescriptor, complete: bool) -> bytes:
        if self.chance(0.005 if complete else 0.05):
            return self.any_field(field.number)
        if field.type == field.TYPE_MESSAGE:
            return self.sized(field.number, self.fields(field.message_type, complete))
        if field.type == field.TYPE_BYTES:
            return self.sized(field.number, self.bytes())
        return self.tag(field.number, VARINT) + self.scalar(field, complete)

    def scalar(self, field: FieldDescriptor, complete: bool = True) -> bytes:
        if field.type == field.TYPE_ENUM and not self.chance(0.01 if complete else 0.1):
            return varint(self.rng.choice(field.enum_type.values).number % 2**64)
        return varint(self.any_number())

    def any_number(self) -> int:
        return self.rng.choice([self.rng.choice(INTERESTING), self.rng.getrandbits(7),
                                self.rng.getrandbits(32), self.rng.getrandbits(64)])

    def bytes(self) -> bytes:
        return self.rng.randbytes(self.rng.choice([0, 1, 5, 20, 130]))

    def tag(self, number: int, wire_type: int) -> bytes:
        return varint(number << 3 | wire_type)

    def sized(self, number: int, data: bytes) -> bytes:
        return self.tag(number, BYTES) + varint(len(data)) + data

    def any_field(self, number: int) -> bytes:
        wire_type = self.rng.choice([VARINT, FIXED64, BYTES, START, FIXED32])
        if wire_type == BYTES:
            return self.sized(number, self.bytes())
        if wire_type == START:
            content = self.any_field(self.rng.randrange(1, 100)) if self.chance(0.7) else b""
            return self.tag(number, START) + content + self.tag(number, END)
        return self.tag(number, wire_type) + {
            VARINT: varint(self.any_number()),
            FIXED64: self.rng.randbytes(8),
            FIXED32: self.rng.randbytes(4)}[wire_type]

    def unknown(self, descriptor: Descriptor) -> bytes:
        while True:
            number = self.rng.choice([self.rng.randrange(1, 40), self.rng.randrange(1, 2**29)])
            if number not in descriptor.fields_by_number:
                return self.any_field(number)


def load(descriptor_set: str) -> list[Descriptor]:
    """Every message type. Strings become bytes: Python would insist on UTF-8, the library does not."""
    files = descriptor_pb2.FileDescriptorSet()
    with open(descriptor_set, "rb") as stream:
        files.ParseFromString(stream.read())
    pool = descriptor_pool.DescriptorPool()
    for file in files.file:
        for kind in file.message_type:
            for field in kind.field:
                if field.type == field.TYPE_STRING:
                    field.type = field.TYPE_BYTES
        pool.Add(file)
    return [pool.FindFileByName(file.name).message_types_by_name[kind.name]
            for file in files.file for kind in file.message_type]


def python_answer(kind: type, data: bytes) -> peer.Answer:
    parsed = kind()
    try:
        parsed.ParseFromString(data)
    except message.DecodeError:
        return peer.Answer(False, False, b"")
    return peer.Answer(True, parsed.IsInitialized(), parsed.SerializePartialToString())


def main() -> None:
    parser = argparse.ArgumentParser()
    parser.add_argument("peer")
    parser.add_argument("descriptor_set")
    parser.add_argument("--count", type=int, default=6000)
    parser.add_argument("--seed", type=int,
                        default=os.environ.get("SEED", random.randrange(2**32)))
    options = parser.parse_args()
    assert api_implementation.Type() == "python"
    print(f"seed {options.seed}")
    started = time.monotonic()

    generator = Generator(random.Random(options.seed))
    types = load(options.descriptor_set)
    factory = message_factory.MessageFactory()
    classes = {descriptor.full_name: factory.GetPrototype(descriptor) for descriptor in types}
    questions = [(descriptor.full_name, generator.message(descriptor))
                 for descriptor in (types[i % len(types)] for i in range(options.count))]

    failures = accepted = initialized = 0

    def disagree(name: str, data: bytes, library: peer.Answer, python: peer.Answer) -> None:
        nonlocal failures
        failures += 1
        if failures <= 5:
            print(f"{name}\n  bytes   {data.hex(' ')}")
            for side, answer in (("library", library), ("Python", python)):
                print(f"  {side:7} accepted={answer.accepted} initialized={answer.initialized} "
                      f"{answer.data.hex(' ')}")

    again = []
    for (name, data), library in zip(questions, peer.ask(options.peer, questions)):
        kind = classes[name]
        python = python_answer(kind, data)
        accepted += library.accepted
        initialized += library.initialized
        if library == python:
            again += [(name, library)] if library.accepted else []
        else:
            disagree(name, data, library, python)

    # Each reads what the other wrote: the library Python's bytes, which are its own as well.
    answers = peer.ask(options.peer, [(name, written.data) for name, written in again])
    for (name, written), library in zip(again, answers):
        python = python_answer(classes[name], written.data)
        if library != written or python != written:
            disagree(name, written.data, library, python)

    print(f"{options.count} messages of {len(types)} types: {accepted} accepted, {initialized} "
          f"initialized, {failures} disagreements, "
          f"{time.monotonic() - started:.1f} s")
    sys.exit(1 if failures else 0)


if __name__ == "__main__":
    main()
