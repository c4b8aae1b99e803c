#!/usr/bin/python3
"""Holds the library and protoc to the golden samples, or adds those that are missing.

Usage: check.py PROTOC DESCRIPTOR_SET PEER
       check.py --add PROTOC DESCRIPTOR_SET

PEER is the program made from ../interop/peer.cc. --add leaves every sample alone that is there: the
values are chosen here, the bytes are protoc's. To replace a sample on purpose, delete it first.
"""
import pathlib
import subprocess
import sys
import tempfile

from google.protobuf.descriptor_pb2 import (FieldDescriptorProto, FileDescriptorProto,
                                            FileDescriptorSet, FileOptions)

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


def add(protoc: str, descriptor_set: str) -> None:
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
    return problems


def check_protoc(protoc: str, files: FileDescriptorSet, golden: list[samples.Sample]) -> list[str]:
    """All samples in one call each way, as the fields of one message made for it."""
    batch = FileDescriptorProto(name="batch.proto", dependency=[f.name for f in files.file])
    batch.options.optimize_for = FileOptions.LITE_RUNTIME  # as the files that it imports
    message = batch.message_type.add(name="Batch")
    for number, sample in enumerate(golden, 1):
        message.field.add(name=f"sample{number}", number=number, type_name="." + sample.message,
                          label=FieldDescriptorProto.LABEL_OPTIONAL,
                          type=FieldDescriptorProto.TYPE_MESSAGE)

    def run(option: str, stdin: bytes) -> bytes:
        answer = subprocess.run(
            [protoc, f"--descriptor_set_in={schema.name}", f"{option}=Batch", batch.name],
            input=stdin, capture_output=True, check=False)
        if answer.returncode != 0:
            sys.exit(f"protoc {option}: {answer.stderr.decode()}")
        return answer.stdout

    with tempfile.NamedTemporaryFile() as schema:
        schema.write(FileDescriptorSet(file=[*files.file, batch]).SerializeToString())
        schema.flush()
        texts = [f"sample{number} {{\n" + "".join(f"  {text}\n" for text, _ in sample.lines) + "}\n"
                 for number, sample in enumerate(golden, 1)]
        encoded = run("--encode", "".join(texts).encode())
        decoded = run("--decode", encoded).decode()

    def varint(value: int) -> bytes:
        return bytes([value & 0x7f | 0x80]) + varint(value >> 7) if value > 0x7f else bytes([value])

    problems, at_byte, at_text = [], 0, 0
    for number, (sample, text) in enumerate(zip(golden, texts), 1):
        head = varint(number << 3 | 2) + varint(len(sample.data))
        data = encoded[at_byte + len(head):][:len(sample.data)]
        if encoded[at_byte:][:len(head)] != head or data != sample.data:
            return problems + [report(sample, "protoc --encode differs", data)]
        if decoded[at_text:][:len(text)] != text:
            return problems + [f"{sample.message} {sample.kind}: protoc --decode gives\n"
                               + decoded[at_text:][:len(text)]]
        at_byte += len(head) + len(data)
        at_text += len(text)
    return problems


def main() -> None:
    if sys.argv[1] == "--add":
        add(*sys.argv[2:])
        return
    protoc, descriptor_set, program = sys.argv[1:]
    files = FileDescriptorSet.FromString(pathlib.Path(descriptor_set).read_bytes())
    golden, problems = [], []
    for unit in schema.load(descriptor_set).units:
        golden += samples.read(path_of(unit)) if path_of(unit).exists() else []
        problems += [f"{message.full_name} has no sample '{kind}': cmake --build build/release "
                     "--target golden-samples" for message, kind in missing(unit)]
    problems += check_library(program, golden)
    problems += check_protoc(protoc, files, golden)
    print("\n".join(problems) or f"{len(golden)} samples hold")
    sys.exit(1 if problems else 0)


if __name__ == "__main__":
    main()
