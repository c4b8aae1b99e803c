#!/usr/bin/python3
"""Makes fuzz inputs of the golden samples.

Usage: golden_seeds.py MESSAGE_LIST SEEDS

Writes SEEDS/message_fuzzer, SEEDS/text_fuzzer, SEEDS/frame_fuzzer and SEEDS/inspector_fuzzer; the
sources of these targets say how their inputs look.
"""
import pathlib
import re
import sys

GOLDEN = pathlib.Path(__file__).parent.parent / "golden"
sys.path.insert(0, str(GOLDEN))
import samples  # noqa: E402

CHUNK = 63  # bytes per chunk of a stream; any
TEXT = b"\xc0"  # masked, on lines, cut in the middle
DECODE, ENCODE = b"\x04", b"\x01"  # the inspector's commands, without options


def main() -> None:
    message_list, seeds = map(pathlib.Path, sys.argv[1:])
    names = re.findall(r'^  X\("([\w.]+)"', message_list.read_text(encoding="ascii"), re.MULTILINE)
    for path in sorted(GOLDEN.glob("*.txt")):
        for sample in samples.read(path):
            name, data = sample.message, sample.data
            index = bytes([names.index(name)])
            file = f"golden-{name}-{sample.kind}"
            (seeds / "message_fuzzer" / file).write_bytes(index + bytes([CHUNK]) + data)
            (seeds / "text_fuzzer" / file).write_bytes(index + TEXT + data)
            header = b"VM\0" + bytes([len(name)]) + len(data).to_bytes(4, "big")
            (seeds / "inspector_fuzzer" / file).write_bytes(index + DECODE + data)
            text = sample.text.encode("ascii")
            (seeds / "inspector_fuzzer" / f"{file}-text").write_bytes(index + ENCODE + text)
            (seeds / "frame_fuzzer" / file).write_bytes(header + name.encode("ascii") + data)


if __name__ == "__main__":
    main()
