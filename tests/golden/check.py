#!/usr/bin/python3
"""Holds the library and protoc to the golden samples.

Usage: check.py PROTOC DESCRIPTOR_SET PEER

PEER is the program made from ../interop/peer.cc.
"""
import pathlib
import subprocess
import sys
import tempfile

from google.protobuf.descriptor_pb2 import (FieldDescriptorProto, FileDescriptorProto,
                                            FileDescriptorSet, FileOptions)

import samples
sys.path.insert(0, str(pathlib.Path(__file__).parent.parent / "interop"))
import peer  # pylint: disable=wrong-import-position

KINDS = ("minimal", "full")


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
    protoc, descriptor_set, program = sys.argv[1:]
    files = FileDescriptorSet()
    files.ParseFromString(pathlib.Path(descriptor_set).read_bytes())

    golden, problems = [], []
    for file in files.file:
        unit = samples.read(pathlib.Path(__file__).parent / (pathlib.Path(file.name).stem + ".txt"))
        golden += unit
        package = file.package + "." if file.package else ""
        present = {(sample.message, sample.kind) for sample in unit}
        problems += [f"{package}{message.name} has no sample '{kind}': run generate.py"
                     for message in file.message_type for kind in KINDS
                     if (package + message.name, kind) not in present]
    problems += check_library(program, golden)
    problems += check_protoc(protoc, files, golden)
    print("\n".join(problems) or f"{len(golden)} samples hold")
    sys.exit(1 if problems else 0)


if __name__ == "__main__":
    main()
