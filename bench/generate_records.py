#!/usr/bin/python3
"""Writes the benchmark's records (records.h) for the messages that it sends, and all that those hold,
from the descriptor set.

Usage: generate_records.py DESCRIPTOR_SET OUTPUT
"""
import sys

from google.protobuf import descriptor_pb2
from google.protobuf.descriptor_pb2 import FieldDescriptorProto as Field

SENT = ["NoResultResponse", "Dial", "GetCurrentCallsResponse", "SignalStrengthChanged",
        "SlaveSetupDataCallResponse", "IccCardStatusResponse", "ImsCallStateChanged"]
# A record holds what the workloads fill in, which is all but these optional fields.
ABSENT = {"uusinfo", "param13", "flag16", "flag20", "flag21", "param22", "suppsvcnotification",
          "callproginfo"}
SCALARS = {Field.TYPE_BOOL: "bool", Field.TYPE_INT32: "std::int32_t", Field.TYPE_ENUM: "std::int32_t",
           Field.TYPE_UINT32: "std::uint32_t"}


def main() -> None:
    files = descriptor_pb2.FileDescriptorSet()
    with open(sys.argv[1], "rb") as stream:
        files.ParseFromString(stream.read())
    messages = {message.name: (file.package, message)
                for file in files.file for message in file.message_type}
    written: set[str] = set()
    with open(sys.argv[2], "w", encoding="ascii") as out:
        def write(name: str) -> None:
            if name in written:
                return
            written.add(name)
            package, message = messages[name]
            members, fill, read = [], [], []
            for field in message.field:
                if field.name in ABSENT:
                    continue
                f = field.name
                if field.type == Field.TYPE_MESSAGE:
                    inner = field.type_name.rsplit(".", 1)[-1]
                    write(inner)
                    cpp_type = f"{inner}Record"
                    element = (f"each.Fill(*message.add_{f}())", f"{cpp_type}::Read(each)")
                    single = (f"{f}.Fill(*message.mutable_{f}())", f"{cpp_type}::Read(message.{f}())")
                elif field.type == Field.TYPE_STRING:
                    cpp_type = "std::string"
                    element = (f"message.add_{f}(each)", "Digest(each)")
                    single = (f"message.set_{f}({f})", f"Digest(message.{f}())")
                else:
                    cpp_type = SCALARS[field.type]
                    single = (f"message.set_{f}(static_cast<decltype(message.{f}())>({f}))",
                              f"Digest(static_cast<std::uint64_t>(message.{f}()))")
                if field.label == Field.LABEL_REPEATED:
                    cpp_type = f"std::vector<{cpp_type}>"
                    fill.append(f"for (const auto& each : {f}) {element[0]};")
                    read.append(f"for (const auto& each : message.{f}()) sum += {element[1]};")
                else:
                    fill.append(f"{single[0]};")
                    read.append(f"sum += {single[1]};")
                members.append(f"{cpp_type} {f}{{}};")
            scope = package.replace(".", "::") + "::" if package else ""
            parts = [f"using Message = ::{scope}{name};", *members,
                     "void Fill(Message& message) const {", *fill, "}",
                     "static std::uint64_t Read(const Message& message) {",
                     "std::uint64_t sum = 0;", *read, "return sum;", "}"]
            out.write(f"struct {name}Record {{\n  " + "\n  ".join(parts) + "\n};\n\n")

        for name in SENT:
            write(name)


if __name__ == "__main__":
    main()
