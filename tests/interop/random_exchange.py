"""Random messages of every type, for scripts that compare readers of them.

Complete and incomplete messages, undeclared enumeration numbers, unknown fields, wrong wire types,
packed numbers, fields out of order and twice, bytes cut off.
"""
import os
import random

os.environ["PROTOCOL_BUFFERS_PYTHON_IMPLEMENTATION"] = "python"
# pylint: disable=wrong-import-position
from google.protobuf import descriptor_pb2, descriptor_pool
from google.protobuf.descriptor import Descriptor, FieldDescriptor

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
            return self.sized(field.number, self.string())
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

    def string(self) -> bytes:
        """Half of them are UTF-8, with characters of one to four bytes."""
        if self.chance(0.5):
            return self.bytes()
        return "".join(self.rng.choices("5+\"\\\n\0\x7fé€😀", k=self.rng.choice([0, 1, 5, 40]))).encode()

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
