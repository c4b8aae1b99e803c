#!/usr/bin/python3
"""Writes message_list.h from the descriptor set: every message and enumeration, in schema order.

Usage: generate_message_list.py DESCRIPTOR_SET OUTPUT
"""
import sys
import zlib

from google.protobuf import descriptor_pb2

HEADER = """\
// Made from the descriptor set by generate_message_list.py; do not edit.
//
// VIRTUAL_MODEM_MESSAGES(X) expands X(type_name, cpp_class, unit) for every message and
// VIRTUAL_MODEM_ENUMS(X) expands X(name, cpp_type, unit) for every enumeration, in schema order.
// type_name is what GetTypeName() returns, as a string; cpp_class is fully qualified.
//
// VIRTUAL_MODEM_INTERFACE is a checksum over the messages and their fields as declared.
#pragma once

"""


def main() -> None:
    source, target = sys.argv[1:]
    files = descriptor_pb2.FileDescriptorSet()
    with open(source, "rb") as stream:
        files.ParseFromString(stream.read())

    includes, messages, enums = [], [], []
    interface = 0
    for file in files.file:
        unit = file.name.split("/")[-1].removesuffix(".proto")
        dots = file.package + "." if file.package else ""
        scope = "::" + dots.replace(".", "::")
        includes.append(f'#include "virtual_modem/{unit}.pb.h"')
        messages += [f'  X("{dots}{m.name}", {scope}{m.name}, {unit})' for m in file.message_type]
        for message in file.message_type:
            interface = zlib.crc32(dots.encode() + message.SerializeToString(deterministic=True),
                                   interface)
        enums += [f"  X({e.name}, {scope}{e.name}, {unit})" for e in file.enum_type]

    with open(target, "w", encoding="ascii") as out:
        out.write(HEADER + "\n".join(includes))
        for macro, rows in (("MESSAGES", messages), ("ENUMS", enums)):
            out.write(f"\n\n#define VIRTUAL_MODEM_{macro}(X) \\\n" + " \\\n".join(rows) + "\n")
        out.write(f"\n#define VIRTUAL_MODEM_INTERFACE {interface:#010x}u\n")


if __name__ == "__main__":
    main()
