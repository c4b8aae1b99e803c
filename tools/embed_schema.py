#!/usr/bin/python3
"""Puts the schema into a script that needs no other file: Wireshark's dissector, gdb's printer.

Usage: embed_schema.py DESCRIPTOR_SET SCRIPT OUTPUT
"""
import json
import pathlib
import pprint
import sys

import schema


def quote(text: str) -> str:
    """A Lua string; the schema is ASCII, so JSON's escapes are Lua's."""
    return json.dumps(" ".join(text.encode("ascii").decode().split()))


def for_lua(everything: schema.Schema) -> str:
    lines = ["local MESSAGES = {"]
    for message in everything.messages:
        lines.append(f"  [{quote(message.full_name)}] = {{ kind = {quote(message.kind)},")
        for field in message.fields:
            is_message = isinstance(field.declared, schema.Message)
            lines.append(f"    {{ number = {field.number}, name = {quote(field.name)}, "
                         f"label = {quote(field.label)}, "
                         f"type = {quote(field.declared.full_name if is_message else field.type)},\n"
                         f"      comment = {quote(field.comment)} }},")
        lines.append("  },")
    lines += ["}", "local ENUMS = {"]
    for enum in everything.enums:
        lines.append(f"  {enum.name} = {{")
        lines += [f"    [{value.number}] = {quote(value.name)}," for value in enum.values]
        lines.append("  },")
    return "\n".join(lines + ["}"]) + "\n"


def for_gdb(everything: schema.Schema) -> str:
    fields = {message.full_name: {
        field.name: (field.declared.cpp_name if isinstance(field.declared, schema.Enum) else "",
                     field.is_subscriber_data, field.number)
        for field in message.fields} for message in everything.messages}
    return f"] = {pprint.pformat(fields, sort_dicts=False, width=104)}\n"


# What gives way to the schema, by the ending of the script.
PLACES = {".lua": ("local MESSAGES, ENUMS = {}, {}\n", for_lua), ".py": ("] = {}\n", for_gdb)}


def main() -> None:
    everything, source, target = schema.load(sys.argv[1]), *map(pathlib.Path, sys.argv[2:])
    placeholder, table = PLACES[source.suffix]
    script = source.read_text(encoding="ascii")
    if script.count(placeholder) != 1:
        sys.exit(f"embed_schema.py: {source} has to hold '{placeholder.strip()}' once")
    target.write_text(script.replace(placeholder, table(everything)), encoding="ascii")


if __name__ == "__main__":
    main()
