"""A 32-bit ARM library as Android's loader reads it: segments, dynamic entries, relocations."""
import struct
from pathlib import Path
from typing import Iterator, NamedTuple

PT_LOAD, PT_DYNAMIC, PT_GNU_STACK, PT_GNU_RELRO = 1, 2, 0x6474E551, 0x6474E552
PF_X, PF_W = 1, 2
DT_HASH, DT_STRTAB, DT_SYMTAB, DT_REL, DT_RELSZ = 4, 5, 6, 17, 18
DT_PLTRELSZ, DT_JMPREL, DT_FLAGS, DT_RELRSZ, DT_RELR = 2, 23, 30, 35, 36
DT_GNU_HASH, DT_ANDROID_REL, DT_ANDROID_RELSZ = 0x6FFFFEF5, 0x6000000F, 0x60000010
DF_BIND_NOW = 8
R_ARM_GLOB_DAT, R_ARM_JUMP_SLOT, R_ARM_RELATIVE = 21, 22, 23
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
    kind: int
    symbol: int


class Library:
    def __init__(self, path: str | Path):
        self.bytes = Path(path).read_bytes()
        start, self.sections_start = struct.unpack_from("<II", self.bytes, 28)
        size, count, _, self.section_count, names = struct.unpack_from("<5H", self.bytes, 42)
        self.segments = [Segment._make(struct.unpack_from("<8I", self.bytes, start + i * size))
                         for i in range(count)]
        dynamic = self.of_kind(PT_DYNAMIC)[0]
        self.dynamic = dict(struct.iter_unpack(
            "<II", self.bytes[dynamic.offset:dynamic.offset + dynamic.file_size]))
        self.section_names = names

    def of_kind(self, kind: int) -> list[Segment]:
        return [segment for segment in self.segments if segment.kind == kind]

    def at(self, address: int, size: int) -> bytes:
        for segment in self.of_kind(PT_LOAD):
            if segment.address <= address < segment.address + segment.file_size:
                start = address - segment.address + segment.offset
                return self.bytes[start:start + size]
        raise ValueError(f"address {address:#x} is not in the file")

    def word(self, address: int) -> int:
        return struct.unpack("<I", self.at(address, 4))[0]

    def symbol(self, index: int) -> str:
        start = self.dynamic[DT_STRTAB] + self.word(self.dynamic[DT_SYMTAB] + index * 16)
        return self.at(start, 4096).split(b"\0", 1)[0].decode()

    def relocations(self) -> list[Relocation]:
        result = []
        for table, size in ((DT_REL, DT_RELSZ), (DT_JMPREL, DT_PLTRELSZ)):
            if table in self.dynamic:
                data = self.at(self.dynamic[table], self.dynamic[size])
                result += [Relocation(address, info & 0xFF, info >> 8)
                           for address, info in struct.iter_unpack("<II", data)]
        if DT_ANDROID_REL in self.dynamic:
            result += aps2(self.at(self.dynamic[DT_ANDROID_REL], self.dynamic[DT_ANDROID_RELSZ]))
        if DT_RELR in self.dynamic:
            data = self.at(self.dynamic[DT_RELR], self.dynamic[DT_RELRSZ])
            result += [Relocation(address, R_ARM_RELATIVE, 0) for address in relr(data)]
        return result

    def sections(self) -> Iterator[tuple[str, int, int]]:
        """Name, address and size of each section that is loaded; the loader itself ignores them."""
        headers = [struct.unpack_from("<10I", self.bytes, self.sections_start + i * 40)
                   for i in range(self.section_count)]
        names = headers[self.section_names][4]
        for name, _, flags, address, _, size, *_ in headers:
            if flags & 2:
                end = self.bytes.index(b"\0", names + name)
                yield self.bytes[names + name:end].decode(), address, size

    def relocations_by_section(self) -> set[tuple]:
        """What is relocated, and to what, in terms that hold wherever the sections lie."""
        sections = list(self.sections())

        def place(address: int) -> tuple[str, int]:
            # Thumb functions have an odd address.
            for name, start, size in sections:
                if start <= address < start + size:
                    return name, address - start
            return "", address
        return {(place(r.address), r.kind,
                 place(self.word(r.address)) if r.kind == R_ARM_RELATIVE else self.symbol(r.symbol))
                for r in self.relocations()}


def aps2(data: bytes) -> Iterator[Relocation]:
    """Android's packed relocations: signed LEB128 numbers, groups that share offset or kind."""
    if data[:4] != b"APS2":
        raise ValueError("packed relocations do not begin with APS2")
    position = 4

    def number() -> int:
        nonlocal position
        value = shift = 0
        while True:
            byte = data[position]
            position += 1
            value |= (byte & 0x7F) << shift
            shift += 7
            if byte < 0x80:
                return value - (1 << shift) if byte & 0x40 else value
    left, address = number(), number()
    while left > 0:
        size, flags = number(), number()
        same_info, same_delta = flags & 1, flags & 2
        if flags & ~3 or not 0 < size <= left:
            raise ValueError("a group of packed relocations that no REL library has")
        delta = number() if same_delta else 0
        info = number() if same_info else 0
        for _ in range(size):
            address += delta if same_delta else number()
            this = info if same_info else number()
            yield Relocation(address & 0xFFFFFFFF, this & 0xFF, (this & 0xFFFFFFFF) >> 8)
        left -= size


def relr(data: bytes) -> Iterator[int]:
    """Addresses to which the load address is added: one, then bitmaps of the 31 words after it."""
    where = 0
    for (entry,) in struct.iter_unpack("<I", data):
        if entry & 1:
            yield from (where + 4 * bit for bit in range(31) if entry >> (bit + 1) & 1)
            where += 31 * 4
        else:
            yield entry
            where = entry + 4


def dirtied_pages(library: Library) -> int:
    return len({r.address // PAGE for r in library.relocations()})


def faults(library: Library, unpacked: Library | None = None) -> list[str]:
    """What would keep the loader from loading the library right, or a platform from taking it.

    unpacked is the same library with relocations that are not packed.
    """
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
        relocations = library.relocations()
    except (ValueError, IndexError) as error:
        return result + [f"relocations cannot be read: {error}"]
    relro = library.of_kind(PT_GNU_RELRO)
    for r in relocations:
        where = f"relocation at {r.address:#x}"
        if r.address % 4:
            result.append(f"{where} is not aligned")
        if not any(s.flags & PF_W and s.holds(r.address) for s in loads):
            result.append(f"{where} is outside the writable segments")
        if r.kind in (R_ARM_GLOB_DAT, R_ARM_JUMP_SLOT) and not any(s.holds(r.address) for s in relro):
            result.append(f"{where} is in a table of addresses that stays writable")
    if unpacked and not result:
        packed, plain = library.relocations_by_section(), unpacked.relocations_by_section()
        if len(relocations) != len(packed) or packed != plain:
            result.append(f"{len(packed ^ plain)} relocations differ between the packed link of "
                          f"{len(relocations)} and the unpacked one of {len(plain)}")
    return result
