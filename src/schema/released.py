"""Refuses a change of the schema that breaks the wire or a caller's source.

Compares proto/ with proto/released.txt, which says of which release it is and lists what that
release promised, one file, message, field, enumeration or value a line. Additions pass, except those
that leave old peers out. What is wrong with the schema as it stands is said first, as the build does.
"""
from __future__ import annotations

import argparse
import os
import pathlib
import re
import shlex
import subprocess
import sys
import tempfile

import schema
import schema.check

ROOT = pathlib.Path(__file__).resolve().parents[2]
WIRE = "programs of the two releases misread each other"
SOURCE = "callers no longer compile"
# What breaks when a property of an element changes.
CONSEQUENCE = {
    "number": WIRE,
    "type": "values are read as something else, and callers may no longer compile",
    "label": "the two releases disagree on what is complete, and callers may no longer compile",
    "default": "an absent field reads as something else",
    "first": "an absent field of this type reads as something else",
    "role": "tools and callers take it for something else",
    "file": "callers no longer find its header",
    "kind": SOURCE,
}


def elements(everything: schema.Schema) -> dict[str, dict[str, str]]:
    """Every element by its full name, with the properties that others rely on; files too."""
    found = {}
    for unit in everything.units:
        found[unit.file] = {"kind": "file"}
        for enum in unit.enums:
            found[enum.full_name] = {"kind": "enum", "file": unit.file, "first": enum.values[0].name}
            for value in enum.values:
                found[f"{enum.full_name}.{value.name}"] = {"kind": "value", "number": str(value.number)}
        for message in unit.messages:
            found[message.full_name] = {"kind": "message", "file": unit.file,
                                        "role": str(message.kind).lower()}
            for field in message.fields:
                found[field.full_name] = {
                    "kind": "field", "number": str(field.number), "label": field.label,
                    "type": field.proto.type_name.lstrip(".") or field.type}
                if field.default is not None:
                    found[field.full_name]["default"] = field.default
    return found


def read_released(path: pathlib.Path) -> dict[str, dict[str, str]]:
    released = {}
    for line in path.read_text(encoding="utf-8").splitlines():
        if line and not line.startswith("#"):
            name, *properties = shlex.split(line)
            released[name] = dict(item.split("=", 1) for item in properties)
    return released


def write_released(path: pathlib.Path, now: dict[str, dict[str, str]]) -> None:
    header = (ROOT / "include/virtual_modem/version.h").read_text(encoding="utf-8")
    version = ".".join(re.findall(r"^#define VIRTUAL_MODEM_VERSION_\w+ (\d+)$", header, re.MULTILINE))
    lines = [f"# release {version}",
             "# What that release promised; written by scripts/check-schema --accept."]
    lines += [shlex.join([name, *(f"{key}={value}" for key, value in properties.items())])
              for name, properties in now.items()]
    path.write_text("\n".join(lines) + "\n", encoding="utf-8")


def breaks(released: dict[str, dict[str, str]], now: dict[str, dict[str, str]]) -> list[str]:
    """One line in plain words for each break."""
    found = []
    for name, old in released.items():
        owner = name.rpartition(".")[0]
        if name not in now:
            if owner in released and owner not in now:
                continue  # gone with its message or enumeration
            heir = [other for other, new in now.items()
                    if other not in released and other.rpartition(".")[0] == owner
                    and (new["kind"], new.get("number")) == (old["kind"], old.get("number"))]
            if heir and "number" in old:
                found.append(f"{old['kind']} {name} was renamed to {heir[0].rpartition('.')[2]}: "
                             f"{SOURCE}")
            else:
                found.append(f"{old['kind']} {name} was removed: {SOURCE}, and its bytes become "
                             "unknown")
            continue
        new = now[name]
        found += [f"{old['kind']} {name}: {key} {old.get(key, 'none')} became "
                  f"{new.get(key, 'none')}: {consequence}"
                  for key, consequence in CONSEQUENCE.items() if old.get(key) != new.get(key)]
    found += [f"field {name} was added as required: messages of old peers lack it and are refused"
              for name, new in now.items() if name not in released
              and new.get("label") == "required" and name.rpartition(".")[0] in released]
    return found


def main() -> None:
    parser = argparse.ArgumentParser(prog="check-schema", description=__doc__,
                                     formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--proto", type=pathlib.Path, default=ROOT / "proto",
                        help="folder of the schema (default: proto)")
    parser.add_argument("--released", type=pathlib.Path, default=ROOT / "proto" / "released.txt",
                        help="what was promised (default: proto/released.txt)")
    parser.add_argument("--accept", action="store_true",
                        help="write that file anew, breaks included: for a release, or after an "
                        "intended break")
    options = parser.parse_args()

    protos = sorted(str(path.relative_to(options.proto)) for path in options.proto.rglob("*.proto"))
    try:
        with tempfile.NamedTemporaryFile() as out:
            subprocess.run([os.environ.get("PROTOC", "protoc"), f"--proto_path={options.proto}",
                            "--include_source_info", f"--descriptor_set_out={out.name}", *protos],
                           check=True)
            everything = schema.load(out.name)
        if found := schema.check.faults(everything, options.proto):
            sys.exit("\n".join(found))
        now = elements(everything)
        if options.accept:
            write_released(options.released, now)
        released = read_released(options.released)
    except (OSError, subprocess.CalledProcessError) as error:
        sys.exit(f"check-schema: {error}")

    found = breaks(released, now)
    for line in found:
        print(f"check-schema: {line}", file=sys.stderr)
    if found:
        sys.exit(f"check-schema: breaks of what was released: {len(found)}")
    added = len(now.keys() - released.keys())
    print(f"check-schema: {len(released)} released elements hold, {added} added since")


if __name__ == "__main__":
    main()
