#!/usr/bin/python3
"""Puts the fields of the schema into gdb's printer, and which of them are subscriber data.

Usage: generate.py DESCRIPTOR_SET VIRTUAL_MODEM_PY OUTPUT
"""
import pathlib
import pprint
import sys

import schema

PLACEHOLDER = "] = {}\n"


def main() -> None:
    everything, source, target = schema.load(sys.argv[1]), *map(pathlib.Path, sys.argv[2:])
    fields = {message.full_name: {
        field.name: (field.declared.cpp_name if isinstance(field.declared, schema.Enum) else "",
                     field.is_subscriber_data, field.number)
        for field in message.fields} for message in everything.messages}
    script = source.read_text(encoding="ascii")
    if script.count(PLACEHOLDER) != 1:
        sys.exit(f"generate.py: {source} has to hold '{PLACEHOLDER.strip()}' once")
    table = pprint.pformat(fields, sort_dicts=False, width=104)
    target.write_text(script.replace(PLACEHOLDER, f"] = {table}\n"), encoding="ascii")


if __name__ == "__main__":
    main()
