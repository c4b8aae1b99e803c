#!/usr/bin/python3
"""Adds golden samples of messages that have none yet; leaves every sample that is there alone.

Usage: generate.py        (needs protoc, or PROTOC in the environment)

The values are chosen here, the bytes are protoc's. To replace a sample on purpose, delete it from
its file first.
"""
import os
import pathlib
import subprocess

from google.protobuf.descriptor_pb2 import FieldDescriptorProto as Field, FileDescriptorSet

import samples

FOLDER = pathlib.Path(__file__).resolve().parent
PROTO = FOLDER.parent.parent / "proto"
PROTOC = [os.environ.get("PROTOC", "protoc"), f"--proto_path={PROTO}"]
# Of each kind in turn. The strings: no UTF-8 and a zero byte; quotes and line end; none; a number.
VALUES = {
    Field.TYPE_INT32: ["-2147483648", "2147483647", "-1", "128", "0"],
    Field.TYPE_UINT32: ["4294967295", "2147483648", "128", "0"],
    Field.TYPE_BOOL: ["true", "false"],
    Field.TYPE_STRING: [r'"\377\376\000\200"', r'"a\"b\\\'\n\t"', '""', '"+861012345678#*"'],
}


class Writer:
    """Writes the text format of one message, with another value for each field in turn."""

    def __init__(self, messages: dict, enums: dict, full: bool):
        self.messages, self.enums, self.full = messages, enums, full
        self.turns: dict[int, int] = {}

    def value(self, field) -> str:
        if field.type == Field.TYPE_ENUM:
            values = self.enums[field.type_name].value
            choice = [values[-1].name, values[0].name]
        else:
            choice = VALUES[field.type]
        if not self.full:
            return {Field.TYPE_ENUM: choice[-1], Field.TYPE_BOOL: "false",
                    Field.TYPE_STRING: '""'}.get(field.type, "0")
        turn = self.turns.get(field.type, 0)
        self.turns[field.type] = turn + 1
        return choice[turn % len(choice)]

    def lines(self, message, indent: str = ""):
        for field in sorted(message.field, key=lambda field: field.number):
            if not self.full and field.label != Field.LABEL_REQUIRED:
                continue
            for _ in range(2 if field.label == Field.LABEL_REPEATED else 1):
                if field.type == Field.TYPE_MESSAGE:
                    yield f"{indent}{field.name} {{"
                    yield from self.lines(self.messages[field.type_name], indent + "  ")
                    yield f"{indent}}}"
                else:
                    yield f"{indent}{field.name}: {self.value(field)}"


def main() -> None:
    protos = [str(path.relative_to(PROTO)) for path in sorted(PROTO.rglob("*.proto"))]
    files = FileDescriptorSet.FromString(subprocess.run(
        [*PROTOC, "--descriptor_set_out=/dev/stdout", *protos], check=True,
        stdout=subprocess.PIPE).stdout)
    scopes = {file.name: "." + file.package + "." if file.package else "." for file in files.file}
    messages = {scopes[f.name] + m.name: m for f in files.file for m in f.message_type}
    enums = {scopes[f.name] + e.name: e for f in files.file for e in f.enum_type}

    for file in files.file:
        path = FOLDER / (pathlib.Path(file.name).stem + ".txt")
        present = {(s.message, s.kind) for s in samples.read(path)} if path.exists() else set()
        with open(path, "a", encoding="ascii") as out:
            for message in file.message_type:
                name = (scopes[file.name] + message.name)[1:]
                for kind in ("minimal", "full"):
                    if (name, kind) in present:
                        continue
                    text = list(Writer(messages, enums, kind == "full").lines(message))
                    # protoc warns of strings that are no UTF-8; ours need not be.
                    data = subprocess.run(
                        [*PROTOC, f"--encode={name}", file.name],
                        input="\n".join(text).encode(), capture_output=True, check=True).stdout
                    out.write(samples.render(name, kind, text, data))
                    print(f"added {name} {kind} to {path.name}")


if __name__ == "__main__":
    main()
