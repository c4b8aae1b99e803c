"""Asks the library what it makes of bytes, through the program made from peer.cc."""
import dataclasses
import struct
import subprocess


@dataclasses.dataclass(frozen=True)
class Answer:
    accepted: bool
    initialized: bool
    data: bytes  # what the library writes of what it read; empty when not accepted


def ask(program: str, questions: list[tuple[str, bytes]]) -> list[Answer]:
    """One answer for each pair of type name and bytes."""
    request = b"".join(struct.pack("<I", len(part)) + part
                       for name, data in questions for part in (name.encode(), data))
    reply = subprocess.run([program], input=request, stdout=subprocess.PIPE, check=True).stdout
    answers, at = [], 0
    while at < len(reply):
        flags, size = struct.unpack_from("<BI", reply, at)
        at += 5
        answers.append(Answer(bool(flags & 1), bool(flags & 2), reply[at:at + size]))
        at += size
    if len(answers) != len(questions):
        raise ValueError(f"{len(questions)} questions, {len(answers)} answers")
    return answers
