"""Reads the descriptor set into the plain objects that the reference pages are made of.

Everything that a page says about the schema comes from here: names, numbers, tags, and the comments
of the schema files. A declaration without a comment is an error (MissingComments), so that the
reference can never have a gap.
"""

import dataclasses
import re

from google.protobuf import descriptor_pb2

FieldProto = descriptor_pb2.FieldDescriptorProto

LABELS = {
    FieldProto.LABEL_REQUIRED: "required",
    FieldProto.LABEL_OPTIONAL: "optional",
    FieldProto.LABEL_REPEATED: "repeated",
}
SCALARS = {
    value: name.removeprefix("TYPE_").lower() for name, value in FieldProto.Type.items()
}
# Wire types by number; every type that is not listed is a varint.
VARINT, FIXED64, LENGTH, FIXED32 = 0, 1, 2, 5
WIRE_TYPES = {
    FieldProto.TYPE_STRING: LENGTH,
    FieldProto.TYPE_BYTES: LENGTH,
    FieldProto.TYPE_MESSAGE: LENGTH,
    FieldProto.TYPE_FLOAT: FIXED32,
    FieldProto.TYPE_FIXED32: FIXED32,
    FieldProto.TYPE_SFIXED32: FIXED32,
    FieldProto.TYPE_DOUBLE: FIXED64,
    FieldProto.TYPE_FIXED64: FIXED64,
    FieldProto.TYPE_SFIXED64: FIXED64,
}
WIRE_NAMES = {VARINT: "varint", FIXED64: "64-bit", LENGTH: "length", FIXED32: "32-bit"}

# Field numbers inside FileDescriptorProto, DescriptorProto and EnumDescriptorProto: the steps of a
# source location's path.
FILE_MESSAGE, FILE_ENUM, FILE_SYNTAX = 4, 5, 12
MESSAGE_FIELD, ENUM_VALUE = 2, 2

SECTION_RULE = re.compile(r"^ ?-{3,} (?P<title>.+?) -{3,}$")
KIND = re.compile(r"\s*(Request|Response|Indication|Record)\b")
# What comments say about who answers whom.
ANSWERED_BY = re.compile(r"\b[Aa]nswered by (?:an? )?(\w+)")
ANSWERS = re.compile(r"\b(?:answers?|Response to)(?: an?)? ([A-Z]\w+)")
AGREED = re.compile(r"\bagreed? (?:on it|between the (?:sides|devices))")


class MissingComments(Exception):
    """Declarations that have no comment, as a list of "file: name"."""


@dataclasses.dataclass
class Field:
    name: str
    number: int
    label: str  # required, optional, repeated
    type: str  # scalar name, or name of a message or an enumeration
    is_scalar: bool
    default: str | None
    tag: str  # tag bytes on the wire, hex
    wire: str  # wire type by name
    comment: str


@dataclasses.dataclass
class Value:
    name: str
    number: int
    wire: str  # the number as it stands on the wire, hex
    comment: str


@dataclasses.dataclass
class Message:
    name: str
    comment: str
    fields: list[Field]
    full_name: str  # what GetTypeName() returns
    cpp_name: str
    carried_by: list[tuple[str, str]] = dataclasses.field(default_factory=list)  # message, field
    answered_by: list[str] = dataclasses.field(default_factory=list)  # where the schema settles it
    answers: list[str] = dataclasses.field(default_factory=list)
    is_agreed: bool = False  # Its answer, or what it answers, is (also) for the two sides to agree.

    @property
    def kind(self):
        """Request, response, indication or record: the first word of the comment, else None."""
        match = KIND.match(self.comment)
        return match[1].lower() if match else None


@dataclasses.dataclass
class Enum:
    name: str
    comment: str
    values: list[Value]
    cpp_name: str
    carried_by: list[tuple[str, str]] = dataclasses.field(default_factory=list)


@dataclasses.dataclass
class Section:
    title: str
    members: list[Message | Enum]

    @property
    def short(self):
        return self.title.rpartition(": ")[2]

    @property
    def anchor(self):
        return "section-" + re.sub(r"[^a-z0-9]+", "-", self.title.lower()).strip("-")


@dataclasses.dataclass
class Unit:
    name: str  # file name without folder and ending
    file: str  # import path
    package: str
    comment: str
    sections: list[Section]

    def of(self, kind):
        return [m for section in self.sections for m in section.members if isinstance(m, kind)]

    @property
    def groups(self):
        """Sections by what stands before the colon of their titles: "" first, then "Enumerations"."""
        prefixes = sorted({section.title.rpartition(": ")[0] for section in self.sections})
        return [(prefix, [s for s in self.sections if s.title.rpartition(": ")[0] == prefix])
                for prefix in prefixes]

    @property
    def messages(self):
        return self.of(Message)

    @property
    def enums(self):
        return self.of(Enum)


def varint(number):
    """The bytes of a varint, as hex; a negative number is sign-extended to 64 bits (ten bytes)."""
    number &= 2**64 - 1
    out = []
    while number > 0x7F:
        out.append(number & 0x7F | 0x80)
        number >>= 7
    return bytes(out + [number]).hex(" ")


def load(path):
    """Units of the descriptor set at path, in its order.

    Raises MissingComments, ValueError when comments contradict each other on who answers whom,
    OSError, or google.protobuf.message.DecodeError.
    """
    with open(path, "rb") as file:
        files = descriptor_pb2.FileDescriptorSet.FromString(file.read()).file
    missing = []
    units = [_unit(file, missing) for file in files]
    if missing:
        raise MissingComments(missing)

    declared = {member.name: member for unit in units for member in unit.of((Message, Enum))}
    for unit in units:
        for message in unit.messages:
            for field in message.fields:
                if not field.is_scalar:
                    declared[field.type].carried_by.append((message.name, field.name))
    _pair([message for unit in units for message in unit.messages])
    return units


def _pair(messages):
    """Fills in who answers whom, from the comments of both sides, which must agree."""
    by_name = {message.name: message for message in messages}
    comments = {message.name: " ".join(message.comment.split()) for message in messages}
    for asker in messages:
        for name in filter(by_name.get, ANSWERED_BY.findall(comments[asker.name])):
            if not re.search(rf"\b{asker.name}\b", comments[name]):
                raise ValueError(f"{asker.name} is answered by {name}, whose comment does not say so")
            asker.answered_by.append(name)
            by_name[name].answers.append(asker.name)
        asker.is_agreed = asker.kind == "request" and not asker.answered_by
        if asker.is_agreed and not AGREED.search(comments[asker.name]):
            raise ValueError(f"{asker.name} tells neither its answer nor that the sides agree on it")
    for message in messages:
        if message.kind == "response":
            for name in filter(by_name.get, ANSWERS.findall(comments[message.name])):
                if name not in message.answers:
                    raise ValueError(f"{message.name} answers {name}, whose comment does not say so")
            message.is_agreed = not message.answers or "the sides agree on it" in comments[message.name]


def _unit(file, missing):
    locations = {tuple(l.path): l for l in file.source_code_info.location}

    def comment(path, name):
        location = locations[path]
        text = location.leading_comments or location.trailing_comments
        if not text.strip():
            missing.append(f"{file.name}: {name}")
        return text

    def field(message, index, proto, path):
        wire_type = VARINT
        if proto.label != proto.LABEL_REPEATED or not proto.options.packed:
            wire_type = WIRE_TYPES.get(proto.type, VARINT)
        else:
            wire_type = LENGTH
        named = proto.type_name.rpartition(".")[2]
        return Field(
            name=proto.name,
            number=proto.number,
            label=LABELS[proto.label],
            type=named or SCALARS[proto.type],
            is_scalar=not named,
            default=proto.default_value if proto.HasField("default_value") else None,
            tag=varint(proto.number << 3 | wire_type),
            wire=WIRE_NAMES[wire_type],
            comment=comment(path + (MESSAGE_FIELD, index), f"{message}.{proto.name}"),
        )

    prefix = file.package + "." if file.package else ""
    scope = prefix.replace(".", "::")

    def message(index, proto):
        path = (FILE_MESSAGE, index)
        return path, Message(
            name=proto.name,
            comment=comment(path, proto.name),
            fields=[field(proto.name, i, f, path) for i, f in enumerate(proto.field)],
            full_name=prefix + proto.name,
            cpp_name=scope + proto.name,
        )

    def enum(index, proto):
        path = (FILE_ENUM, index)
        return path, Enum(
            name=proto.name,
            comment=comment(path, proto.name),
            values=[
                Value(v.name, v.number, varint(v.number),
                      comment(path + (ENUM_VALUE, i), f"{proto.name}.{v.name}"))
                for i, v in enumerate(proto.value)
            ],
            cpp_name=scope + proto.name,
        )

    members = [message(i, m) for i, m in enumerate(file.message_type)]
    members += [enum(i, e) for i, e in enumerate(file.enum_type)]
    members.sort(key=lambda member: locations[member[0]].span[0])

    sections = []
    for path, member in members:
        for detached in locations[path].leading_detached_comments:
            if rule := SECTION_RULE.match(detached.strip("\n")):
                sections.append(Section(rule["title"], []))
        if not sections:
            sections.append(Section("Declarations", []))
        sections[-1].members.append(member)

    # The file's comment stands above `syntax`; the license line before it is a comment of its own.
    head = locations[(FILE_SYNTAX,)]
    about = head.leading_comments or (list(head.leading_detached_comments) or [""])[-1]
    if not about.strip():
        missing.append(f"{file.name}: the file itself")
    return Unit(
        name=file.name.rpartition("/")[2].removesuffix(".proto"),
        file=file.name,
        package=file.package,
        comment=about,
        sections=sections,
    )
