#!/usr/bin/python3
"""Holds the two lists of fields to the schema: whether a field is subscriber data is decided once.

Usage: check_subscriber_data.py DESCRIPTOR_SET SUBSCRIBER_DATA NOT_SUBSCRIBER_DATA

Fails, naming the fields, when a string or integer field stands in neither list or in both, and when a
list names a field twice, one that does not exist, or one of another type.
"""
import sys

from google.protobuf import descriptor_pb2

FieldProto = descriptor_pb2.FieldDescriptorProto
# Flags and codes name no one; the fields of a message are decided one by one.
NOT_DECIDED = {FieldProto.TYPE_BOOL, FieldProto.TYPE_ENUM, FieldProto.TYPE_MESSAGE}


def fields_to_decide(descriptor_set: str) -> set[str]:
    """Every field that can hold subscriber data itself, as message.field."""
    with open(descriptor_set, "rb") as stream:
        files = descriptor_pb2.FileDescriptorSet.FromString(stream.read()).file
    return {
        f"{file.package}.{message.name}.{field.name}".lstrip(".")
        for file in files
        for message in file.message_type
        for field in message.field
        if field.type not in NOT_DECIDED
    }


def listed(path: str) -> list[str]:
    with open(path, encoding="ascii") as stream:
        lines = (line.partition("#")[0].strip() for line in stream)
        return [line for line in lines if line]


def main() -> None:
    descriptor_set, masked_path, shown_path = sys.argv[1:]
    fields, masked, shown = fields_to_decide(descriptor_set), listed(masked_path), listed(shown_path)
    faults = [f"{name}: in neither list" for name in fields if name not in masked + shown]
    faults += [f"{name}: in both lists" for name in masked if name in shown]
    for path, names in ((masked_path, masked), (shown_path, shown)):
        faults += [f"{name}: no string or integer field ({path})" for name in names
                   if name not in fields]
        faults += [f"{name}: twice in {path}" for name in set(names) if names.count(name) > 1]
    if faults:
        sys.exit("decide in proto/virtual_modem/ what is subscriber data:\n  "
                 + "\n  ".join(sorted(faults)))


if __name__ == "__main__":
    main()
