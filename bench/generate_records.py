#!/usr/bin/python3
"""Writes the benchmark's records (records.h) for the messages that it sends, and all that those hold,
from the descriptor set.

Usage: generate_records.py DESCRIPTOR_SET OUTPUT
"""
import sys

import schema

SENT = ["NoResultResponse", "Dial", "GetCurrentCallsResponse", "SignalStrengthChanged",
        "SlaveSetupDataCallResponse", "IccCardStatusResponse", "ImsCallStateChanged"]
# A record holds what the workloads fill in, which is all but these optional fields.
ABSENT = {"uusinfo", "param13", "flag16", "flag20", "flag21", "param22", "suppsvcnotification",
          "callproginfo"}
NUMBERS = {"bool": "bool", "uint32": "std::uint32_t"}  # the others are std::int32_t


def record(message: schema.Message) -> str:
    members, fill, read = [], [], []
    for field in message.fields:
        f = field.name
        if f in ABSENT:
            continue
        if isinstance(field.declared, schema.Message):
            cpp_type = f"{field.type}Record"
            element = (f"each.Fill(*message.add_{f}())", f"{cpp_type}::Read(each)")
            single = (f"{f}.Fill(*message.mutable_{f}())", f"{cpp_type}::Read(message.{f}())")
        elif field.type == "string":
            cpp_type = "std::string"
            element = (f"message.add_{f}(each)", "Digest(each)")
            single = (f"message.set_{f}({f})", f"Digest(message.{f}())")
        else:
            cpp_type = NUMBERS.get(field.type, "std::int32_t")
            single = (f"message.set_{f}(static_cast<decltype(message.{f}())>({f}))",
                      f"Digest(static_cast<std::uint64_t>(message.{f}()))")
        if field.label == "repeated":
            cpp_type = f"std::vector<{cpp_type}>"
            fill.append(f"for (const auto& each : {f}) {element[0]};")
            read.append(f"for (const auto& each : message.{f}()) sum += {element[1]};")
        else:
            fill.append(f"{single[0]};")
            read.append(f"sum += {single[1]};")
        members.append(f"{cpp_type} {f}{{}};")
    parts = [f"using Message = ::{message.cpp_name};", *members,
             "void Fill(Message& message) const {", *fill, "}",
             "static std::uint64_t Read(const Message& message) {",
             "std::uint64_t sum = 0;", *read, "return sum;", "}"]
    return f"struct {message.name}Record {{\n  " + "\n  ".join(parts) + "\n};\n"


def main() -> None:
    by_name = {message.name: message for message in schema.load(sys.argv[1]).messages}
    records: dict[str, str] = {}

    def write(message: schema.Message) -> None:
        for field in message.fields:  # what it holds comes first
            if isinstance(field.declared, schema.Message) and field.name not in ABSENT:
                write(field.declared)
        records[message.name] = record(message)

    for name in SENT:
        write(by_name[name])
    filled = "".join(f"{name}Record Make{name}();\n" for name in SENT)
    used = "".join(f'  use("{name}", Make{name}());\n' for name in SENT)
    with open(sys.argv[2], "w", encoding="ascii") as out:
        out.write("\n".join(records.values()) + f"\n{filled}\n"
                  f"template <typename Use>\nvoid ForEachMessage(const Use& use) {{\n{used}}}\n")


if __name__ == "__main__":
    main()
