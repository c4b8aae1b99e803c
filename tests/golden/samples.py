"""Reads and writes the golden files, whose form README.md describes."""
import dataclasses
import pathlib


@dataclasses.dataclass
class Sample:
    message: str
    kind: str
    lines: list[tuple[str, bytes]]  # text and bytes of each line

    @property
    def text(self) -> str:
        return "".join(text + "\n" for text, _ in self.lines)

    @property
    def data(self) -> bytes:
        return b"".join(data for _, data in self.lines)

    def field_at(self, offset: int) -> str:
        """The field that owns the byte there, with the sub-messages on the way to it."""
        way = []
        for text, data in self.lines:
            if text.endswith("}"):
                way.pop()
                continue
            way.append(text.split()[0].rstrip(":"))
            if offset < len(data):
                return ".".join(way)
            offset -= len(data)
            if not text.endswith("{"):
                way.pop()
        return "the end"


def read(path: pathlib.Path) -> list[Sample]:
    samples: list[Sample] = []
    for number, line in enumerate(path.read_text(encoding="ascii").splitlines(), 1):
        if line.startswith("== "):
            samples.append(Sample(*line[3:].split(), []))
        elif line:
            text, separator, data = line.rpartition(" |")
            if not separator or not samples:
                raise ValueError(f"{path}:{number}: neither '== MESSAGE KIND' nor 'TEXT | HEX'")
            samples[-1].lines.append((text.rstrip(), bytes.fromhex(data)))
    return samples


def render(message: str, kind: str, text: list[str], data: bytes) -> str:
    """One sample: beside each line of text the bytes of its field, of a sub-message its head."""
    def after_varint(at: int) -> int:
        while data[at] & 0x80:
            at += 1
        return at + 1

    out = [f"== {message} {kind}"]
    at = 0
    for line in text:
        start = at
        if not line.endswith("}"):
            value = after_varint(start)
            at = after_varint(value)
            if data[start] & 7 == 2 and not line.endswith("{"):
                assert at == value + 1, f"{message} {kind}: a string of more than 127 bytes"
                at += data[value]
        out.append(f"{line:<47} | {data[start:at].hex(' ')}".rstrip())
    assert at == len(data), f"{message} {kind}: the text does not account for every byte"
    return "\n".join(out) + "\n\n"
