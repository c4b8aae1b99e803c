"""The schema as plain objects: the one reader for generators, checks, pages and tests.

    import schema            # with src/ on PYTHONPATH; CMake's ${virtual_modem_python} has it there
    everything = schema.load(descriptor_set)

load() reads the descriptor set of the build, which has the comments, and the list of subscriber
data, by default that beside it. It reads all that protoc accepts and judges nothing: schema.check
does so before anything is generated, and what imports this module may rely on it.

Schema    units, messages, enums in schema order; find(full name)
Unit      name, file, package, sections of members; messages, enums
Message   kind, unit, fields, carried_by, answered_by, answers, is_agreed
Field     number, label, type, declared (the message or enumeration), default, tag, wire,
          is_subscriber_data
Enum      unit, values, carried_by
Value     number, wire

Each has name, full_name (as in the type names of the wire), cpp_name, comment, file, line, and proto:
its descriptor.
"""
from __future__ import annotations

import dataclasses
import pathlib
import re
import typing

from google.protobuf import descriptor_pb2

FieldProto = descriptor_pb2.FieldDescriptorProto

# Field numbers inside FileDescriptorProto, DescriptorProto and EnumDescriptorProto: the steps of a
# source location's path.
FILE_MESSAGE, FILE_ENUM, FILE_SYNTAX = 4, 5, 12
MESSAGE_FIELD, ENUM_VALUE = 2, 2

SECTION_RULE = re.compile(r"^ ?-{3,} (?P<title>.+?) -{3,}$")
KIND = re.compile(r"\s*(Request|Response|Indication|Record)\b")
# What comments say about who answers whom.
ANSWERED_BY = re.compile(r"\b[Aa]nswered by (?:an? )?([A-Z]\w+)")
ANSWERS = re.compile(r"\b(?:answers?|Response to)(?: an?)? ([A-Z]\w+)")


@dataclasses.dataclass
class Declaration:
    name: str
    full_name: str
    cpp_name: str
    comment: str
    file: str  # import path of its unit
    line: int
    proto: typing.Any = dataclasses.field(repr=False)


@dataclasses.dataclass
class Field(Declaration):
    number: int
    label: str  # required, optional, repeated
    type: str  # name of a scalar, or of a message or an enumeration without its package
    default: str | None
    tag: str
    wire: str  # length or varint: no other wire type passes the check
    is_subscriber_data: bool
    declared: Message | Enum | None = None

    @property
    def is_scalar(self) -> bool:
        return not self.proto.type_name


@dataclasses.dataclass
class Value(Declaration):
    number: int
    wire: str  # the number as it stands on the wire, in hex


@dataclasses.dataclass
class Message(Declaration):
    fields: list[Field]
    unit: Unit | None = dataclasses.field(default=None, repr=False)
    carried_by: list[tuple[str, str]] = dataclasses.field(default_factory=list)  # message, field
    answered_by: list[str] = dataclasses.field(default_factory=list)  # where the schema settles it
    answers: list[str] = dataclasses.field(default_factory=list)
    is_agreed: bool = False  # Its answer, or what it answers, is (also) for the two sides to agree.

    @property
    def kind(self) -> str | None:
        """Request, response, indication or record: the first word of the comment, else None."""
        match = KIND.match(self.comment)
        return match[1].lower() if match else None

    @property
    def words(self) -> str:
        return " ".join(self.comment.split())


@dataclasses.dataclass
class Enum(Declaration):
    values: list[Value]
    unit: Unit | None = dataclasses.field(default=None, repr=False)
    carried_by: list[tuple[str, str]] = dataclasses.field(default_factory=list)


@dataclasses.dataclass
class Section:
    title: str
    members: list[Message | Enum]


@dataclasses.dataclass
class Unit:
    name: str  # file name without folder and ending
    file: str  # import path
    package: str
    comment: str
    sections: list[Section]  # members in the order of the file
    messages: list[Message]  # in the order of the descriptors, as the enumerations are
    enums: list[Enum]
    proto: typing.Any = dataclasses.field(repr=False)
    line: int = 1


@dataclasses.dataclass
class Schema:
    units: list[Unit]

    def __post_init__(self) -> None:
        self.messages = [message for unit in self.units for message in unit.messages]
        self.enums = [enum for unit in self.units for enum in unit.enums]
        self._by_name = {each.full_name: each for each in self.messages + self.enums}

    def find(self, full_name: str) -> Message | Enum | None:
        return self._by_name.get(full_name)


def varint(number: int) -> str:
    """The bytes of a varint, in hex; a negative number is sign-extended to 64 bits (ten bytes)."""
    number &= 2**64 - 1
    out = []
    while number > 0x7F:
        out.append(number & 0x7F | 0x80)
        number >>= 7
    return bytes(out + [number]).hex(" ")


def read_list(path) -> list[tuple[int, str]]:
    """Line number and name of each line of a list of fields; from # on a line is a comment."""
    lines = pathlib.Path(path).read_text(encoding="utf-8").splitlines()
    names = [(number, line.partition("#")[0].strip()) for number, line in enumerate(lines, 1)]
    return [(number, name) for number, name in names if name]


def load(descriptor_set, subscriber_data=None) -> Schema:
    """The schema of a descriptor set: a path, or a FileDescriptorSet.

    subscriber_data is the path of the list; without one that beside the set is read, if there is any.
    """
    if not isinstance(descriptor_set, descriptor_pb2.FileDescriptorSet):
        path = pathlib.Path(descriptor_set)
        beside = path.with_name("subscriber_data.txt")
        subscriber_data = subscriber_data or (beside if beside.exists() else None)
        descriptor_set = descriptor_pb2.FileDescriptorSet.FromString(path.read_bytes())
    listed = {name for _, name in read_list(subscriber_data)} if subscriber_data else set()
    schema = Schema([_unit(file, listed) for file in descriptor_set.file])
    for message in schema.messages:
        for field in message.fields:
            if declared := schema.find(field.proto.type_name.lstrip(".")):
                field.declared = declared
                declared.carried_by.append((message.name, field.name))
    _pair(schema.messages)
    return schema


def _pair(messages: list[Message]) -> None:
    """Fills in who answers whom, as the comments of those who ask say."""
    by_name = {message.name: message for message in messages}
    for asker in messages:
        asker.answered_by = [name for name in ANSWERED_BY.findall(asker.words) if name in by_name]
        for name in asker.answered_by:
            by_name[name].answers.append(asker.name)
        asker.is_agreed = asker.kind == "request" and not asker.answered_by
    for message in messages:
        if message.kind == "response":
            message.is_agreed = not message.answers or "the sides agree on it" in message.words


def _unit(file, listed: set[str]) -> Unit:
    locations = {tuple(l.path): l for l in file.source_code_info.location}
    nowhere = descriptor_pb2.SourceCodeInfo.Location(span=[0])
    prefix = file.package + "." if file.package else ""

    def about(proto, path, scope: str = prefix) -> list:
        """What every declaration begins with."""
        location = locations.get(path, nowhere)
        full_name = scope + proto.name
        return [proto.name, full_name, full_name.replace(".", "::"),
                location.leading_comments or location.trailing_comments, file.name,
                location.span[0] + 1, proto]

    def field(proto, path, scope: str) -> Field:
        is_long = proto.options.packed or proto.type in (
            FieldProto.TYPE_STRING, FieldProto.TYPE_BYTES, FieldProto.TYPE_MESSAGE)
        return Field(
            *about(proto, path, scope),
            number=proto.number,
            label=FieldProto.Label.Name(proto.label)[len("LABEL_"):].lower(),
            type=proto.type_name.rpartition(".")[2]
            or FieldProto.Type.Name(proto.type)[len("TYPE_"):].lower(),
            default=proto.default_value if proto.HasField("default_value") else None,
            tag=varint(proto.number << 3 | (2 if is_long else 0)),
            wire="length" if is_long else "varint",
            is_subscriber_data=scope + proto.name in listed)

    def message(proto, path) -> Message:
        scope = f"{prefix}{proto.name}."
        return Message(*about(proto, path), fields=[
            field(f, (*path, MESSAGE_FIELD, i), scope) for i, f in enumerate(proto.field)])

    def enum(proto, path) -> Enum:
        # A value's name stands in the scope around its enumeration, in C++ too.
        return Enum(*about(proto, path), values=[
            Value(*about(v, (*path, ENUM_VALUE, i)), number=v.number, wire=varint(v.number))
            for i, v in enumerate(proto.value)])

    messages = [message(m, (FILE_MESSAGE, i)) for i, m in enumerate(file.message_type)]
    enums = [enum(e, (FILE_ENUM, i)) for i, e in enumerate(file.enum_type)]
    paths = [(each, (FILE_MESSAGE, i)) for i, each in enumerate(messages)]
    paths += [(each, (FILE_ENUM, i)) for i, each in enumerate(enums)]

    sections: list[Section] = []
    for member, path in sorted(paths, key=lambda item: item[0].line):
        for detached in locations.get(path, nowhere).leading_detached_comments:
            if rule := SECTION_RULE.match(detached.strip("\n")):
                sections.append(Section(rule["title"], []))
        if not sections:
            sections.append(Section("Declarations", []))
        sections[-1].members.append(member)

    # The file's comment stands above `syntax`; the license line before it is a comment of its own.
    head = locations.get((FILE_SYNTAX,), nowhere)
    unit = Unit(
        name=pathlib.PurePath(file.name).stem,
        file=file.name,
        package=file.package,
        comment=head.leading_comments or (list(head.leading_detached_comments) or [""])[-1],
        sections=sections, messages=messages, enums=enums, proto=file)
    for member in messages + enums:
        member.unit = unit
    return unit
