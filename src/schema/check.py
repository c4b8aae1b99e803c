"""Says what is wrong with the schema, before anything is generated from it.

Usage: python3 -m schema.check DESCRIPTOR_SET PROTO_FOLDER [STAMP]

One line a fault, "file:line: name: what is wrong, what to do", and status 1. PROTO_FOLDER holds the
schema's files and the two lists of fields; STAMP is written when nothing is wrong.
"""
from __future__ import annotations

import pathlib
import re
import sys

import schema

MASKED, SHOWN = "subscriber_data.txt", "not_subscriber_data.txt"
DECIDED = {"string", "bytes", "int32", "uint32", "int64", "uint64"}  # flags and codes name no one
TYPES = DECIDED | {"bool"}
AGREED = re.compile(r"\bagreed? (?:on it|between the (?:sides|devices))")
# What the rows of the companion's tables hold (src/text/tables.h).
LONGEST_NAME, MOST_TYPES, MOST_ROWS, MOST_NAMES = 32, 2047, 65535, 65535
# Names of fields that protoc changes in C++.
CPP_WORDS = set("""
    alignas alignof and asm assert auto bitand bitor bool break case catch char class compl const
    constexpr continue decltype default delete do double else enum explicit export extern false float
    for friend goto if inline int long mutable namespace new noexcept not nullptr operator or private
    protected public register return short signed sizeof static struct switch template this throw true
    try typedef typeid typename union unsigned using virtual void volatile wchar while xor""".split())


class Check:
    def __init__(self, everything: schema.Schema, folder: pathlib.Path):
        self.schema = everything
        self.folder = folder
        self.found: list[tuple[str, int, str]] = []

    def say(self, declared: schema.Declaration | schema.Unit, wrong: str, name: str = "") -> None:
        self.say_at(declared.file, declared.line, name or declared.name, wrong)

    def say_at(self, file: str, line: int, name: str, wrong: str) -> None:
        self.found.append((file, line, f"{name}: {wrong}"))

    def run(self) -> list[str]:
        for unit in self.schema.units:
            self.unit(unit)
        built = {unit.file for unit in self.schema.units}
        for path in sorted(self.folder.rglob("*.proto")):
            if (file := path.relative_to(self.folder).as_posix()) not in built:
                self.say_at(file, 1, path.stem, "no unit of this name is built; list the file in Android.bp")
        self.names()
        self.answers()
        self.lists()
        self.sizes()
        order = {unit.file: place for place, unit in enumerate(self.schema.units)}
        self.found.sort(key=lambda fault: (order.get(fault[0], len(order)), *fault))
        return [f"{self.folder.name}/{file}:{line}: {fault}" for file, line, fault in self.found]

    def unit(self, unit: schema.Unit) -> None:
        if not unit.file.startswith("virtual_modem/"):
            self.say(unit, "is outside virtual_modem/; import units of that folder only")
            return
        if unit.proto.syntax not in ("", "proto2"):
            self.say(unit, f"its syntax is {unit.proto.syntax}; make it proto2, as the other units are")
        if unit.proto.options.optimize_for != unit.proto.options.LITE_RUNTIME:
            self.say(unit, "its classes would need the full runtime; add "
                     "'option optimize_for = LITE_RUNTIME;'")
        for word in CPP_WORDS.intersection(unit.package.split(".")):
            self.say(unit, f"its package holds {word}, which is a word of C++; choose another")
        if not unit.comment.strip():
            self.say(unit, "has no comment; say above 'syntax' what the unit is for")
        for what, there in (("extensions", unit.proto.extension), ("services", unit.proto.service)):
            if there:
                self.say(unit, f"declares {what}, which no tool here shows; leave them out", there[0].name)
        for enum in unit.enums:
            self.comment(enum, "what the enumeration tells and which message carries it")
            if enum.proto.options.allow_alias:
                self.say(enum, "two values share a number, and text names one; leave out allow_alias")
            for value in enum.values:
                self.comment(value, "what it means", f"{enum.name}.{value.name}")
        for message in unit.messages:
            self.message(message)

    def comment(self, declared: schema.Declaration, tell: str, name: str = "") -> bool:
        if not declared.comment.strip():
            self.say(declared, f"has no comment; say {tell}", name)
        for letter in sorted({letter for letter in declared.comment if letter > "~"}):
            self.say(declared, f"its comment has '{letter}'; write it in ASCII", name)
        return bool(declared.comment.strip())

    def message(self, message: schema.Message) -> None:
        kinds = "Request, Response, Indication or Record"
        if self.comment(message, f"its kind first ({kinds}), who sends it and what answers it"):
            if not message.kind:
                self.say(message, f"its comment does not name its kind; begin it with {kinds}")
        for what, there in (("messages, groups or maps", message.proto.nested_type),
                            ("enumerations", message.proto.enum_type),
                            ("extensions", message.proto.extension or message.proto.extension_range),
                            ("oneofs", message.proto.oneof_decl)):
            if there:
                self.say(message, f"declares {what} inside, which the tables do not hold; declare messages "
                         "and enumerations beside it, and optional fields")
        for field in message.fields:
            self.field(field, f"{message.name}.{field.name}")

    def field(self, field: schema.Field, name: str) -> None:
        def say(wrong: str) -> None:
            self.say(field, wrong, name)

        self.comment(field, "meaning, unit, range and sentinel", name)
        if field.is_scalar and field.type not in TYPES:
            say(f"its type {field.type} is one that the tools do not show; take one of "
                + ", ".join(sorted(TYPES)))
        if field.proto.options.packed:
            say("is packed, but lists are written unpacked here; leave out [packed = true]")
        if field.default is not None and field.type == "bytes":
            say("bytes take no default here; leave it out")
        if not re.fullmatch("[a-z][a-z0-9]*", field.name) or field.name in CPP_WORDS:
            say("name fields in lower-case letters and digits, without separators, and not by a word "
                "of C++")
        if len(field.name) > LONGEST_NAME:
            say(f"its name has over {LONGEST_NAME} letters, which the tables do not hold; shorten it")

    def names(self) -> None:
        """Pages and tables call declarations by their names without the package."""
        seen: dict[str, schema.Unit] = {}
        for declared in self.schema.messages + self.schema.enums:
            other = seen.setdefault(declared.name, declared.unit)
            if other is not declared.unit:
                self.say(declared, f"{other.file} declares one of this name; choose another")

    def answers(self) -> None:
        by_name = {message.name: message for message in self.schema.messages}
        for message in self.schema.messages:
            named = schema.ANSWERED_BY.findall(message.words)
            for name in named:
                if name not in by_name:
                    self.say(message, f"is answered by {name}, which is no message; correct the name")
                elif not re.search(rf"\b{message.name}\b", by_name[name].words):
                    self.say(message, f"is answered by {name}, whose comment does not say so; name "
                             f"{message.name} in the comment of {name}")
            if message.kind == "request" and not named and not AGREED.search(message.words):
                self.say(message, "its comment names no answer; write 'answered by NAME' or 'the sides "
                         "agree on it'")
            if message.kind == "response":
                for name in schema.ANSWERS.findall(message.words):
                    if name in by_name and name not in message.answers:
                        self.say(message, f"answers {name}, whose comment does not say so; write "
                                 f"'answered by {message.name}' there")

    def lists(self) -> None:
        fields = {field.full_name: field for message in self.schema.messages for field in message.fields}
        places: dict[str, str] = {}
        for list_name in (MASKED, SHOWN):
            file = f"virtual_modem/{list_name}"
            for line, name in schema.read_list(self.folder / file):
                if name in places:
                    self.say_at(file, line, name, f"is in {places[name]} already; keep one line")
                elif name not in fields:
                    self.say_at(file, line, name, "the schema has no such field; correct or delete it")
                elif fields[name].type not in DECIDED:
                    self.say_at(file, line, name, f"{fields[name].type} names no one; delete the line")
                places.setdefault(name, f"{list_name}:{line}")
        for name, field in fields.items():
            if field.type in DECIDED and name not in places:
                self.say(field, "nobody decided whether it is subscriber data; add it to "
                         f"{MASKED}, or to {SHOWN} under its reason", name)

    def sizes(self) -> None:
        names = {field.name for message in self.schema.messages for field in message.fields}
        for count, most, what in (
                (len(self.schema.messages), MOST_TYPES, "messages"),
                (len(self.schema.enums), MOST_TYPES, "enumerations"),
                (sum(2 * len(m.fields) + 16 for m in self.schema.messages), MOST_ROWS, "rows of fields"),
                (sum(map(len, names)), MOST_NAMES, "letters in names of fields")):
            if count > most:
                self.say(self.schema.units[-1], f"{count} {what} are more than the tables hold; widen "
                         "src/text/tables.h", "schema")


def faults(everything: schema.Schema, folder: pathlib.Path) -> list[str]:
    """One line for each fault of the schema, whose files are in the folder."""
    return Check(everything, folder).run()


def main() -> None:
    descriptor_set, folder, *stamp = sys.argv[1:]
    found = faults(schema.load(descriptor_set), pathlib.Path(folder))
    if found:
        sys.exit("\n".join(found))
    for path in stamp:
        pathlib.Path(path).touch()


if __name__ == "__main__":
    main()
