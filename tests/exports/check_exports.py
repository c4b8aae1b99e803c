#!/usr/bin/python3
"""Holds what the libraries export to what callers link against, and what the first needs to the runtime.

Usage: check_exports.py LIBRARY DESCRIPTOR_SET TEXT_LIBRARY

The names follow from the schema: each message exports its class, each enumeration its functions. A
name that is missing breaks callers; a name that is too much becomes a promise nobody meant. The
companion library exports what its public headers declare.
"""
import re
import subprocess
import sys

import schema

PB = "google::protobuf::"
STRING = "std::__cxx11::basic_string<char, std::char_traits<char>, std::allocator<char> >"


def message_symbols(message: schema.Message) -> set[str]:
    cls = message.cpp_name
    scope = cls[:-len(message.name)]
    members = [
        f"{message.name}({PB}Arena*, bool)", f"{message.name}({cls} const&)", f"~{message.name}()",
        "Clear()", f"MergeFrom({cls} const&)", f"CopyFrom({cls} const&)",
        f"CheckTypeAndMergeFrom({PB}MessageLite const&)", f"InternalSwap({cls}*)",
        "IsInitialized() const", "ByteSizeLong() const", "SetCachedSize(int) const",
        "GetTypeName() const", f"_InternalParse(char const*, {PB}internal::ParseContext*)",
        f"_InternalSerialize(unsigned char*, {PB}io::EpsCopyOutputStream*) const",
    ]
    return {f"{cls}::{member}" for member in members} | {
        f"{scope}_{message.name}_default_instance_", f"vtable for {cls}",
        f"{cls}* {PB}Arena::CreateMaybeMessage<{cls}>({PB}Arena*)"}


def enum_symbols(enum: schema.Enum) -> set[str]:
    name = enum.cpp_name
    return {f"{name}_IsValid(int)", f"{name}_Name({name})", f"{name}_Parse({STRING} const&, {name}*)"}


def exports(library: str) -> list[tuple[str, str]]:
    """The exported names, each with its kind."""
    lines = subprocess.run(["nm", "--dynamic", "--demangle", "--defined-only", library], check=True,
                           capture_output=True, text=True).stdout.splitlines()
    return [(kind, re.sub(r"\[abi:\w+\]", "", name))
            for _, kind, name in (line.split(maxsplit=2) for line in lines)]


def main() -> None:
    library, descriptor_set, text_library = sys.argv[1:]
    everything = schema.load(descriptor_set)
    contract = set().union(*map(message_symbols, everything.messages),
                           *map(enum_symbols, everything.enums))

    exported = {name for _, name in exports(library)}
    dynamic = subprocess.run(["readelf", "--wide", "--dynamic", "--dyn-syms", library], check=True,
                             capture_output=True, text=True).stdout
    needed = re.findall(r"NEEDED.*\[(.*)\]", dynamic)

    faults = [f"not exported: {name}" for name in sorted(contract - exported)]
    # A class may have more members. Instances of templates of the runtime and of the standard library
    # are not ours to count.
    classes = tuple(f"{message.cpp_name}::" for message in everything.messages)
    faults += [f"exported beside the contract: {name}" for name in sorted(exported - contract)
               if not re.search(r"google::protobuf|\bstd::", name) and not name.startswith(classes)]
    faults += [f"type information exported: {n}" for n in sorted(exported) if n.startswith("typeinfo")]
    if not any("protobuf" in name and "lite" in name for name in needed):
        faults.append(f"not linked to the lite runtime: {needed}")
    if any(re.match(r"libprotobuf\.so|libprotoc", name) for name in needed):
        faults.append(f"linked to more than the lite runtime: {needed}")

    # An executable may hold default instances in copies of its own; the library must use those too.
    if re.search(r"PROTECTED.*_default_instance_", dynamic):
        faults.append("default instances are bound inside the library: executables see others")

    text_exported = exports(text_library)
    # Weak names are instances of templates again.
    faults += [f"exported by the companion library: {name}" for kind, name in text_exported
               if kind.isupper() and kind not in "VW" and
               not re.match(r"virtual_modem::(?!text::)", name)]
    faults += [f"type information exported: {name}" for _, name in text_exported
               if name.startswith("typeinfo")]

    print("\n".join(faults) or f"{len(contract)} names of the contract, {len(exported)} exported; "
          f"the companion library exports {len(text_exported)}")
    sys.exit(1 if faults else 0)


if __name__ == "__main__":
    main()
