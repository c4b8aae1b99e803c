"""Asks the library what it makes of bytes, through the program built from peer.cc."""
import dataclasses
import struct
import subprocess
import typing


class Texts(typing.NamedTuple):
    line: bytes
    lines: bytes
    masked_line: bytes
    masked: bytes
    missing: bytes


@dataclasses.dataclass(frozen=True)
class Answer:
    accepted: bool
    initialized: bool
    data: bytes  # what the library writes of what it read; empty when not accepted
    texts: Texts | None = dataclasses.field(default=None, compare=False)


def ask(program: str, questions: list[tuple[str, bytes]]) -> list[Answer]:
    """One answer for each pair of type name and bytes."""
    request = b"".join(struct.pack("<I", len(part)) + part
                       for name, data in questions for part in (name.encode(), data))
    reply = subprocess.run([program], input=request, stdout=subprocess.PIPE, check=True).stdout
    records, at = [], 0
    while at < len(reply):
        size, = struct.unpack_from("<I", reply, at)
        records.append(reply[at + 4:at + 4 + size])
        at += 4 + size
    answers = [Answer(state != b"refused", state == b"initialized", data, Texts(*texts))
               for state, data, *texts in zip(*[iter(records)] * 7)]
    if len(answers) != len(questions):
        raise ValueError(f"{len(questions)} questions, {len(answers)} answers")
    return answers
