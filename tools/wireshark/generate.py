#!/usr/bin/python3
"""Puts the schema into the Wireshark dissector.

Usage: generate.py DESCRIPTOR_SET VIRTUAL_MODEM_LUA OUTPUT
"""
import json
import pathlib
import sys

import schema

PLACEHOLDER = "local MESSAGES, ENUMS = {}, {}\n"


def quote(text: str) -> str:
    """A Lua string; the schema is ASCII, so JSON's escapes are Lua's."""
    return json.dumps(" ".join(text.encode("ascii").decode().split()))


def tables(everything: schema.Schema) -> str:
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


def main() -> None:
    everything, source, target = schema.load(sys.argv[1]), *map(pathlib.Path, sys.argv[2:])
    script = source.read_text(encoding="ascii")
    if script.count(PLACEHOLDER) != 1:
        sys.exit(f"generate.py: {source} has to hold '{PLACEHOLDER.strip()}' once")
    target.write_text(script.replace(PLACEHOLDER, tables(everything)), encoding="ascii")


if __name__ == "__main__":
    main()
