#!/usr/bin/python3
"""Puts the fields of the schema into gdb's printer, and which of them are subscriber data.

Usage: generate.py DESCRIPTOR_SET SUBSCRIBER_DATA VIRTUAL_MODEM_PY OUTPUT
"""
import pathlib
import pprint
import sys

from google.protobuf import descriptor_pb2

PLACEHOLDER = "] = {}\n"


def main() -> None:
    descriptor_set, subscriber_data, source, target = map(pathlib.Path, sys.argv[1:])
    listed = {line.partition("#")[0].strip()
              for line in subscriber_data.read_text(encoding="ascii").splitlines()}
    fields = {}
    for file in descriptor_pb2.FileDescriptorSet.FromString(descriptor_set.read_bytes()).file:
        for message in file.message_type:
            name = f"{file.package}.{message.name}".lstrip(".")
            fields[name] = {
                field.name: (field.type_name[1:] if field.type == field.TYPE_ENUM else "",
                             f"{name}.{field.name}" in listed)
                for field in message.field}
    script = source.read_text(encoding="ascii")
    if script.count(PLACEHOLDER) != 1:
        sys.exit(f"generate.py: {source} has to hold '{PLACEHOLDER.strip()}' once")
    table = pprint.pformat(fields, sort_dicts=False, width=104)
    target.write_text(script.replace(PLACEHOLDER, f"] = {table}\n"), encoding="ascii")


if __name__ == "__main__":
    main()
