"""A 32-bit ARM library as Android's loader reads it: segments, dynamic entries, relocations."""
import re
import struct
import subprocess
from functools import cached_property
from pathlib import Path
from typing import NamedTuple

PT_LOAD, PT_DYNAMIC, PT_GNU_STACK, PT_GNU_RELRO = 1, 2, 0x6474E551, 0x6474E552
PF_X, PF_W = 1, 2
DT_HASH, DT_FLAGS, DT_GNU_HASH = 4, 30, 0x6FFFFEF5
DF_BIND_NOW = 8
LOADER_PAGE = 16384  # the largest page that a device may have
PAGE = 4096


class Segment(NamedTuple):
    kind: int
    offset: int
    address: int
    physical: int
    file_size: int
    memory_size: int
    flags: int
    alignment: int

    def holds(self, address: int, size: int = 4) -> bool:
        return self.address <= address and address + size <= self.address + self.memory_size


class Relocation(NamedTuple):
    address: int
    kind: str


class Library:
    def __init__(self, path: str | Path):
        self.path, self.bytes = path, Path(path).read_bytes()
        start, = struct.unpack_from("<I", self.bytes, 28)
        size, count = struct.unpack_from("<2H", self.bytes, 42)
        self.segments = [Segment._make(struct.unpack_from("<8I", self.bytes, start + i * size))
                         for i in range(count)]
        dynamic = self.of_kind(PT_DYNAMIC)[0]
        self.dynamic = dict(struct.iter_unpack(
            "<II", self.bytes[dynamic.offset:dynamic.offset + dynamic.file_size]))

    def of_kind(self, kind: int) -> list[Segment]:
        return [segment for segment in self.segments if segment.kind == kind]

    @cached_property
    def relocations(self) -> list[Relocation]:
        """Those in all tables, unpacked."""
        read = subprocess.run(["llvm-readobj-19", "--relocations", self.path],
                              capture_output=True, text=True, check=False)
        if read.returncode or read.stderr:
            raise ValueError(read.stderr.strip())
        return [Relocation(int(address, 16), kind) for address, kind in
                re.findall(r"(?m)^ +0x([0-9A-F]+) (R_ARM_\w+)", read.stdout)]


def dirtied_pages(library: Library) -> int:
    return len({r.address // PAGE for r in library.relocations})


def faults(library: Library) -> list[str]:
    """What would keep the loader from loading the library right, or a platform from taking it."""
    result = []
    loads = library.of_kind(PT_LOAD)
    for load in loads:
        where = f"load segment at {load.address:#x}"
        if load.flags & PF_W and load.flags & PF_X:
            result.append(f"{where} is writable and executable")
        if load.alignment % LOADER_PAGE or (load.address - load.offset) % LOADER_PAGE:
            result.append(f"{where} is not aligned to {LOADER_PAGE} bytes")
    stack = library.of_kind(PT_GNU_STACK)
    if len(stack) != 1 or stack[0].flags & PF_X:
        result.append("the stack is executable")
    if DT_GNU_HASH not in library.dynamic or DT_HASH in library.dynamic:
        result.append("the symbols do not have the GNU hash table alone")
    if not library.dynamic.get(DT_FLAGS, 0) & DF_BIND_NOW:
        result.append("symbols are not bound at load")
    try:
        relocations = library.relocations
    except ValueError as error:
        return result + [f"relocations cannot be read: {error}"]
    relro = library.of_kind(PT_GNU_RELRO)
    for r in relocations:
        where = f"relocation at {r.address:#x}"
        if r.address % 4:
            result.append(f"{where} is not aligned")
        if not any(s.flags & PF_W and s.holds(r.address) for s in loads):
            result.append(f"{where} is outside the writable segments")
        if r.kind in ("R_ARM_GLOB_DAT", "R_ARM_JUMP_SLOT") and not any(s.holds(r.address) for s in relro):
            result.append(f"{where} is in a table of addresses that stays writable")
    return result
