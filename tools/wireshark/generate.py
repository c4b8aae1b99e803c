#!/usr/bin/python3
"""Puts the schema into the Wireshark dissector.

Usage: generate.py DESCRIPTOR_SET VIRTUAL_MODEM_LUA OUTPUT
"""
import json
import pathlib
import sys

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[2] / "docs" / "reference"))
import schema  # pylint: disable=wrong-import-position

PLACEHOLDER = "local MESSAGES, ENUMS = {}, {}\n"
SCALARS = {"int32", "uint32", "bool", "string"}  # as virtual_modem.lua has them


def quote(text: str) -> str:
    """A Lua string; the schema is ASCII, so JSON's escapes are Lua's."""
    return json.dumps(" ".join(text.encode("ascii").decode().split()))


def tables(units: list[schema.Unit]) -> str:
    # A field names its type without the package.
    full_names = {m.name: m.full_name for unit in units for m in unit.messages}
    lines = ["local MESSAGES = {"]
    for message in (m for unit in units for m in unit.messages):
        lines.append(f"  [{quote(message.full_name)}] = {{ kind = {quote(message.kind or '')},")
        for field in message.fields:
            if field.is_scalar and field.type not in SCALARS:
                sys.exit(f"generate.py: virtual_modem.lua cannot show {field.type} "
                         f"({message.full_name}.{field.name})")
            named = full_names.get(field.type, field.type)
            lines.append(f"    {{ number = {field.number}, name = {quote(field.name)}, "
                         f"label = {quote(field.label)}, type = {quote(named)},\n"
                         f"      comment = {quote(field.comment)} }},")
        lines.append("  },")
    lines += ["}", "local ENUMS = {"]
    for enum in (e for unit in units for e in unit.enums):
        lines.append(f"  {enum.name} = {{")
        lines += [f"    [{value.number}] = {quote(value.name)}," for value in enum.values]
        lines.append("  },")
    return "\n".join(lines + ["}"]) + "\n"


def main() -> None:
    descriptor_set, source, target = sys.argv[1:]
    script = pathlib.Path(source).read_text(encoding="ascii")
    if script.count(PLACEHOLDER) != 1:
        sys.exit(f"generate.py: {source} has to hold '{PLACEHOLDER.strip()}' once")
    pathlib.Path(target).write_text(
        script.replace(PLACEHOLDER, tables(schema.load(descriptor_set))), encoding="ascii")


if __name__ == "__main__":
    main()
