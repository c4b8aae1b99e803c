#!/usr/bin/python3
"""Makes fuzz inputs of the golden samples.

Usage: golden_seeds.py MESSAGE_LIST SEEDS

Writes SEEDS/message_fuzzer and SEEDS/frame_fuzzer, whose sources say how their inputs look.
"""
import pathlib
import re
import sys

GOLDEN = pathlib.Path(__file__).parent.parent / "golden"
sys.path.insert(0, str(GOLDEN))
import samples  # noqa: E402

CHUNK = 63  # bytes per chunk of a stream; any


def main() -> None:
    message_list, seeds = map(pathlib.Path, sys.argv[1:])
    names = re.findall(r'^  X\("([\w.]+)"', message_list.read_text(encoding="ascii"), re.MULTILINE)
    for path in sorted(GOLDEN.glob("*.txt")):
        for sample in samples.read(path):
            name, data = sample.message, sample.data
            file = f"golden-{name}-{sample.kind}"
            (seeds / "message_fuzzer" / file).write_bytes(bytes([names.index(name), CHUNK]) + data)
            header = b"VM\0" + bytes([len(name)]) + len(data).to_bytes(4, "big")
            (seeds / "frame_fuzzer" / file).write_bytes(header + name.encode("ascii") + data)


if __name__ == "__main__":
    main()
