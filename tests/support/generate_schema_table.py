#!/usr/bin/python3
"""Writes schema_table.inc, the schema as rows of C++ data, from the descriptor set.

Usage: generate_schema_table.py DESCRIPTOR_SET SUBSCRIBER_DATA OUTPUT

FIELD(message, number, name, label, kind, type, subscriber_data): one per field, in number order.
VALUE(enum, name, number): one per value, in number order.
The full runtime reads the descriptor set here, in a process of its own, so that the tests hold the
library to something that was not made by the same generator.
"""
import sys

from google.protobuf.descriptor_pb2 import FieldDescriptorProto, FileDescriptorSet

LABELS = {
    FieldDescriptorProto.LABEL_REQUIRED: "kRequired",
    FieldDescriptorProto.LABEL_OPTIONAL: "kOptional",
    FieldDescriptorProto.LABEL_REPEATED: "kRepeated",
}
# The kinds in use. Another one needs a place in the tests first.
KINDS = {
    FieldDescriptorProto.TYPE_INT32: "kInt32",
    FieldDescriptorProto.TYPE_UINT32: "kUint32",
    FieldDescriptorProto.TYPE_BOOL: "kBool",
    FieldDescriptorProto.TYPE_ENUM: "kEnum",
    FieldDescriptorProto.TYPE_STRING: "kString",
    FieldDescriptorProto.TYPE_MESSAGE: "kMessage",
}


def main() -> None:
    source, subscriber_data, target = sys.argv[1:]
    files = FileDescriptorSet()
    with open(source, "rb") as stream:
        files.ParseFromString(stream.read())
    with open(subscriber_data, encoding="ascii") as stream:
        masked = {line.strip() for line in stream if "." in line and not line.startswith("#")}

    rows = []
    for file in files.file:
        prefix = file.package + "." if file.package else ""
        for message in file.message_type:
            for f in sorted(message.field, key=lambda f: f.number):
                assert not f.options.packed, f"{message.name}.{f.name}: packed fields have no test"
                rows.append(f'FIELD("{prefix}{message.name}", {f.number}, "{f.name}", '
                            f'{LABELS[f.label]}, {KINDS[f.type]}, "{f.type_name.lstrip(".")}", '
                            f'{str(f"{prefix}{message.name}.{f.name}" in masked).lower()})')
        for enum in file.enum_type:
            rows += [f'VALUE("{prefix}{enum.name}", "{v.name}", {v.number})'
                     for v in sorted(enum.value, key=lambda v: v.number)]
    with open(target, "w", encoding="ascii") as out:
        out.write("\n".join(rows) + "\n")


if __name__ == "__main__":
    main()
