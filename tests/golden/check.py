#!/usr/bin/python3
"""Holds the library and its companion to the golden samples, or adds those that are missing.

Usage: check.py DESCRIPTOR_SET PEER
       check.py --add DESCRIPTOR_SET PROTOC

PEER is the program built from ../interop/peer.cc. --add leaves every sample alone that is there: the
values are chosen here, the bytes are protoc's. To replace a sample on purpose, delete it first.
"""
import pathlib
import subprocess
import sys

import samples
import schema
sys.path.insert(0, str(pathlib.Path(__file__).parent.parent / "interop"))
import peer  # pylint: disable=wrong-import-position

FOLDER = pathlib.Path(__file__).parent
KINDS = ("minimal", "full")
# What a full sample holds of each type in turn. The strings: no UTF-8 and a zero byte; quotes and line
# end; none; a number.
STRINGS = [r'"\377\376\000\200"', r'"a\"b\\\'\n\t"', '""', '"+861012345678#*"']
VALUES = {
    "int32": ["-2147483648", "2147483647", "-1", "128", "0"],
    "uint32": ["4294967295", "2147483648", "128", "0"],
    "int64": ["-9223372036854775808", "9223372036854775807", "-1", "4294967296", "0"],
    "uint64": ["18446744073709551615", "9223372036854775808", "4294967296", "0"],
    "bool": ["true", "false"],
    "string": STRINGS,
    "bytes": STRINGS,
}


class Writer:
    """Writes the text format of one message, with another value for each field in turn."""

    def __init__(self, full: bool):
        self.full = full
        self.turns: dict[str, int] = {}

    def value(self, field: schema.Field) -> str:
        if field.declared:
            kind, choice = "enum", [field.declared.values[-1].name, field.declared.values[0].name]
        else:
            kind, choice = field.type, VALUES[field.type]
        if not self.full:
            return {"enum": choice[-1], "bool": "false", "string": '""', "bytes": '""'}.get(kind, "0")
        turn = self.turns.get(kind, 0)
        self.turns[kind] = turn + 1
        return choice[turn % len(choice)]

    def lines(self, message: schema.Message, indent: str = ""):
        for field in sorted(message.fields, key=lambda field: field.number):
            if not self.full and field.label != "required":
                continue
            for _ in range(2 if field.label == "repeated" else 1):
                if isinstance(field.declared, schema.Message):
                    yield f"{indent}{field.name} {{"
                    yield from self.lines(field.declared, indent + "  ")
                    yield f"{indent}}}"
                else:
                    yield f"{indent}{field.name}: {self.value(field)}"


def path_of(unit: schema.Unit) -> pathlib.Path:
    return FOLDER / f"{unit.name}.txt"


def missing(unit: schema.Unit) -> list[tuple[schema.Message, str]]:
    path = path_of(unit)
    present = {(s.message, s.kind) for s in samples.read(path)} if path.exists() else set()
    return [(message, kind) for message in unit.messages for kind in KINDS
            if (message.full_name, kind) not in present]


def add(descriptor_set: str, protoc: str) -> None:
    for unit in schema.load(descriptor_set).units:
        for message, kind in missing(unit):
            text = list(Writer(kind == "full").lines(message))
            # protoc warns of strings that are not UTF-8; ours need not be.
            data = subprocess.run(
                [protoc, f"--descriptor_set_in={descriptor_set}", f"--encode={message.full_name}", unit.file],
                input="\n".join(text).encode(), capture_output=True, check=True).stdout
            with open(path_of(unit), "a", encoding="ascii") as out:
                out.write(samples.render(message.full_name, kind, text, data))
            print(f"added {message.full_name} {kind} to {path_of(unit).name}")


def report(sample: samples.Sample, problem: str, data: bytes) -> str:
    differ = (i for i, (a, b) in enumerate(zip(sample.data, data)) if a != b)
    offset = next(differ, min(len(sample.data), len(data)))
    return (f"{sample.message} {sample.kind}: {problem} at byte {offset}, {sample.field_at(offset)}\n"
            f"  golden {sample.data.hex(' ')}\n  now    {data.hex(' ')}")


def check_library(program: str, golden: list[samples.Sample]) -> list[str]:
    problems = []
    for sample, answer in zip(golden, peer.ask(program, [(s.message, s.data) for s in golden])):
        if not answer.accepted or answer.data != sample.data:
            problems.append(report(sample, "the library differs", answer.data))
        elif not answer.initialized:
            problems.append(f"{sample.message} {sample.kind}: not initialized")
        elif answer.texts.lines.decode("ascii") != sample.text:
            problems.append(f"{sample.message} {sample.kind}: printed as\n{answer.texts.lines.decode()}")
    return problems


def main() -> None:
    if sys.argv[1] == "--add":
        add(*sys.argv[2:])
        return
    descriptor_set, program = sys.argv[1:]
    golden, problems = [], []
    for unit in schema.load(descriptor_set).units:
        golden += samples.read(path_of(unit)) if path_of(unit).exists() else []
        problems += [f"{message.full_name} has no sample '{kind}': cmake --build build/release "
                     "--target golden-samples" for message, kind in missing(unit)]
    problems += check_library(program, golden)
    print("\n".join(problems) or f"{len(golden)} samples hold")
    sys.exit(1 if problems else 0)


if __name__ == "__main__":
    main()
