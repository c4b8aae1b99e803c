#!/usr/bin/python3
"""Makes fuzz inputs of the golden samples.

Usage: golden_seeds.py MESSAGE_LIST SEEDS

Writes a folder of SEEDS for message_fuzzer, text_fuzzer, frame_fuzzer and the inspector's; the
sources of these targets say how their inputs look.
"""
import pathlib
import re
import struct
import sys

GOLDEN = pathlib.Path(__file__).parent.parent / "golden"
sys.path.insert(0, str(GOLDEN))
import samples  # noqa: E402

CHUNK = 63  # bytes per chunk of a stream; any
TEXT = b"\xc0"  # masked, on lines, cut in the middle
DECODE, ENCODE, LOG = b"\x04", b"\x01", b"\x80"  # the inspector's commands, without options
READ_LOG = b"\x09"  # its readers of text


def capture(frame: bytes) -> bytes:
    """Of one packet, as docs/captures.md has it."""
    packet = struct.pack(">BBHHHBBHIIHHHH", 0x45, 0, 28 + len(frame), 0, 0, 64, 17, 0, 0x7F000001,
                         0x7F000001, 47601, 47602, 8 + len(frame), 0) + frame
    return struct.pack("<IHHiIIIIIII", 0xA1B2C3D4, 2, 4, 0, 0, 65535, 101, 1, 2, len(packet),
                       len(packet)) + packet


def main() -> None:
    message_list, seeds = map(pathlib.Path, sys.argv[1:])
    names = re.findall(r'^  X\("([\w.]+)"', message_list.read_text(encoding="ascii"), re.MULTILINE)
    for path in sorted(GOLDEN.glob("*.txt")):
        for sample in samples.read(path):
            name, data = sample.message, sample.data
            index = bytes([names.index(name) % 256])
            file = f"golden-{name}-{sample.kind}"
            (seeds / "message_fuzzer" / file).write_bytes(index + bytes([CHUNK]) + data)
            (seeds / "text_fuzzer" / file).write_bytes(index + TEXT + data)
            header = b"VM\0" + bytes([len(name)]) + len(data).to_bytes(4, "big")
            (seeds / "inspector_fuzzer" / file).write_bytes(index + DECODE + data)
            text = sample.text.encode("ascii")
            (seeds / "inspector_fuzzer" / f"{file}-text").write_bytes(index + ENCODE + text)
            log = name.encode("ascii") + b": " + text
            (seeds / "inspector_text_fuzzer" / file).write_bytes(index + READ_LOG + log)
            frame = header + name.encode("ascii") + data
            (seeds / "frame_fuzzer" / file).write_bytes(frame)
            (seeds / "inspector_fuzzer" / f"{file}-capture").write_bytes(index + LOG + capture(frame))


if __name__ == "__main__":
    main()
