#!/usr/bin/python3
"""Spoils copies of the library built for Android, one fault at a time, and sees each one refused.

Usage: elf_load_test.py LIBRARY
"""
import struct
import sys
import tempfile
import unittest
from pathlib import Path

import elf_load
from elf_load import PF_W, PF_X, PT_GNU_RELRO, PT_GNU_STACK, PT_LOAD

DT_RELR, DT_ANDROID_REL = 36, 0x6000000F
LIBRARY = Path(sys.argv[1])
FIELDS = {name: 4 * i for i, name in enumerate(elf_load.Segment._fields)}


class Spoiled(unittest.TestCase):
    def setUp(self):
        self.library = elf_load.Library(LIBRARY)
        self.bytes = bytearray(self.library.bytes)

    def expect(self, fault: str) -> None:
        with tempfile.NamedTemporaryFile() as copy:
            copy.write(self.bytes)
            copy.flush()
            faults = elf_load.faults(elf_load.Library(copy.name))
        self.assertTrue(any(fault in found for found in faults), faults[:5])

    def spoil_segment(self, segment: elf_load.Segment, field: str, value: int) -> None:
        headers = struct.unpack_from("<I", self.bytes, 28)[0]
        at = headers + 32 * self.library.segments.index(segment)
        struct.pack_into("<I", self.bytes, at + FIELDS[field], value)

    def spoil_at(self, address: int, change: int, size: int = 4) -> None:
        load = next(s for s in self.library.of_kind(PT_LOAD) if s.holds(address))
        at = address - load.address + load.offset
        old = int.from_bytes(self.bytes[at:at + size], "little")
        self.bytes[at:at + size] = (old ^ change).to_bytes(size, "little")

    def test_untouched(self):
        self.assertEqual(elf_load.faults(self.library), [])

    def test_relocations(self):
        table = self.library.dynamic[DT_RELR]
        for address, change, fault in (
                (table, 2, "is not aligned"),
                (table, 0x40000000, "outside the writable segments"),
                (self.library.dynamic[DT_ANDROID_REL], 1, "cannot be read")):
            with self.subTest(fault=fault):
                self.bytes = bytearray(self.library.bytes)
                self.spoil_at(address, change)
                self.expect(fault)

    def test_segments(self):
        text = next(s for s in self.library.of_kind(PT_LOAD) if s.flags & PF_X)
        stack, = self.library.of_kind(PT_GNU_STACK)
        relro, = self.library.of_kind(PT_GNU_RELRO)
        for segment, field, value, fault in (
                (text, "alignment", 4096, "not aligned to 16384"),
                (text, "address", text.address + 4096, "not aligned to 16384"),
                (text, "flags", text.flags | PF_W, "writable and executable"),
                (stack, "flags", stack.flags | PF_X, "stack is executable"),
                (relro, "memory_size", relro.memory_size // 2, "stays writable")):
            with self.subTest(field=field, fault=fault):
                self.bytes = bytearray(self.library.bytes)
                self.spoil_segment(segment, field, value)
                self.expect(fault)


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
