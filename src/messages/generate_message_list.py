#!/usr/bin/python3
"""Writes message_list.h from the descriptor set: every message and enumeration, in schema order.

Usage: generate_message_list.py DESCRIPTOR_SET OUTPUT
"""
import pathlib
import sys
import zlib

import schema

HEADER = """\
// Generated from the descriptor set by generate_message_list.py; do not edit.
//
// VIRTUAL_MODEM_MESSAGES(X) expands X(type_name, cpp_class, unit) for every message and
// VIRTUAL_MODEM_ENUMS(X) expands X(name, cpp_type, unit) for every enumeration, in schema order.
// type_name is what GetTypeName() returns, as a string; cpp_class is fully qualified.
//
// VIRTUAL_MODEM_INTERFACE is a checksum over the messages and their fields as declared.
#pragma once

"""


def main() -> None:
    everything, target = schema.load(sys.argv[1]), pathlib.Path(sys.argv[2])
    interface = 0
    for message in everything.messages:
        scope = message.full_name[:-len(message.name)]
        interface = zlib.crc32(
            scope.encode() + message.proto.SerializeToString(deterministic=True), interface)

    lines = [f'#include "virtual_modem/{unit.name}.pb.h"' for unit in everything.units]
    for macro, rows in (
            ("MESSAGES", [f'"{m.full_name}", ::{m.cpp_name}, {m.unit.name}' for m in everything.messages]),
            ("ENUMS", [f"{e.name}, ::{e.cpp_name}, {e.unit.name}" for e in everything.enums])):
        lines += ["", " \\\n".join([f"#define VIRTUAL_MODEM_{macro}(X)", *(f"  X({row})" for row in rows)])]
    lines += ["", f"#define VIRTUAL_MODEM_INTERFACE {interface:#010x}u"]
    target.write_text(HEADER + "\n".join(lines) + "\n", encoding="ascii")


if __name__ == "__main__":
    main()
