#!/usr/bin/python3
"""Writes the tables of libvirtual-modem-text from the schema, which has passed schema.check.

Usage: generate_tables.py DESCRIPTOR_SET [SUBSCRIBER_DATA] OUTPUT

SUBSCRIBER_DATA is wanted when the list does not stand beside the set.
"""
import pathlib
import sys

import schema

# Names of the numbers of an enumeration from its lowest on are kept at hand, so many at most.
MOST_SLOTS, MOST_SLOTS_IN_ALL = 600, 65535


def last_dense(numbers) -> int:
    """Up to which number each has a row: no more than twice as many as are declared, and 16."""
    ordered = [number for number in sorted(numbers) if number <= 255]
    return max((n for count, n in enumerate(ordered, 1) if n <= 2 * count + 16), default=0)


def main() -> None:
    everything, target = schema.load(*sys.argv[1:-1]), sys.argv[-1]
    messages, enums = everything.messages, everything.enums
    index = {each.full_name: place for each in (messages, enums) for place, each in enumerate(each)}

    names = "".join(dict.fromkeys(f.name for message in messages for f in message.fields))
    message_rows, field_rows, sparse_rows = [], [], []
    for message in messages:
        by_number = {f.number: f for f in message.fields}
        dense = last_dense(by_number)
        message_rows.append(f"{{{len(field_rows)}, {dense}}},  // {message.full_name}")
        for number in [*range(1, dense + 1), *sorted(n for n in by_number if n > dense)]:
            if number not in by_number:
                field_rows.append("{},")
                continue
            if number > dense:
                sparse_rows.append(f"{{{number}, {len(field_rows)}}},")
            f = by_number[number]
            kind = f.type if f.is_scalar else type(f.declared).__name__
            below = index[f.declared.full_name] if f.declared else 0
            flags = [str(flag).lower() for flag in (
                f.label == "repeated", f.label == "required", f.is_subscriber_data)]
            field_rows.append(
                f"{{{names.index(f.name)}, {below}, FieldKind::k{kind.title()}, {flags[0]}, "
                f"{len(f.name)}, {flags[1]}, {flags[2]}, {number if number <= dense else 0}}},")
    message_rows.append(f"{{{len(field_rows)}, 0}},")
    sparse = "nullptr, nullptr"
    if sparse_rows:
        sparse = "std::begin(kSparse), std::end(kSparse)"
        sparse_rows = ["constexpr SparseNumber kSparse[] = {", *sparse_rows, "};"]

    out = ["// Generated from the descriptor set by generate_tables.py; do not edit.",
           '#include "text/generated.h"',
           "",
           "#include <atomic>",
           "#include <iterator>",
           "#include <string>",
           "",
           "namespace virtual_modem::text {",
           "namespace {",
           "",
           "struct EnumSlots {",
           "  std::uint16_t slot;   // of the first number",
           "  std::uint16_t count;  // numbers that have one",
           "  std::int32_t first;   // number",
           "};", "",
           "constexpr Message kMessages[] = {", *message_rows, "};",
           "constexpr Field kFields[] = {", *field_rows, "};", *sparse_rows,
           f'constexpr char kNames[{len(names)} + kNamePadding + 1] = "{names}";',
           "",
           "// Null for an enumeration that no field has.",
           "const std::string* LibraryName(unsigned enumeration, std::int32_t number) {",
           "  switch (enumeration) {"]
    slots, slot_rows = 0, []
    for place, enum in enumerate(enums):
        if not enum.carried_by:
            slot_rows.append(f"{{0, 0, 0}},  // {enum.full_name}")
            continue
        numbers = [value.number for value in enum.values]
        out += [f"    case {place}:",
                f"      return &::{enum.cpp_name}_Name(static_cast<::{enum.cpp_name}>(number));"]
        first = min(numbers)
        most = min(MOST_SLOTS, MOST_SLOTS_IN_ALL - slots)
        count = max((n - first + 1 for n in numbers if n - first < most), default=0)
        slot_rows.append(f"{{{slots}, {count}, {first}}},  // {enum.full_name}")
        slots += count
    out += ["  }",
            "  return nullptr;", "}", "",
            "constexpr EnumSlots kEnumSlots[] = {", *slot_rows, "};",
            f"std::atomic<const std::string*> name_slots[{slots}];", "",
            "std::string_view EnumName(const void*, unsigned enumeration, std::int32_t number) {",
            "  const EnumSlots& row = kEnumSlots[enumeration];",
            "  const auto place = static_cast<std::uint32_t>(number) - static_cast<std::uint32_t>(row.first);",
            "  if (place >= row.count) return *LibraryName(enumeration, number);",
            "  std::atomic<const std::string*>& slot = name_slots[row.slot + place];",
            "  const std::string* name = slot.load(std::memory_order_acquire);",
            "  if (name == nullptr) {",
            "    name = LibraryName(enumeration, number);",
            "    slot.store(name, std::memory_order_release);",
            "  }",
            "  return *name;",
            "}", "", "}  // namespace", "",
            "const Tables kTables{kMessages, kFields, " + sparse + ", kNames, EnumName, nullptr};", "",
            "const Type kTypes[kTypeCount] = {"]
    serials = []
    for place, message in enumerate(messages):
        fields = {f.name: f for f in message.fields}
        serial = fields.get("serial")
        has_serial = serial is not None and (serial.type, serial.label != "repeated") == ("int32", True)
        if has_serial:
            serials.append((place, message.cpp_name))
        scope, _, plain = f"::{message.cpp_name}".rpartition("::")
        instance = f"{scope}::_{plain}_default_instance_"
        out.append(f'    {{"{message.full_name}", "{message.unit.name}", Kind::k{message.kind.title()}, '
                   f"reinterpret_cast<const google::protobuf::MessageLite*>(&{instance}), "
                   f"{str(has_serial).lower()}, {str('error' in fields).lower()}}},")
    by_name = sorted(range(len(messages)), key=lambda place: messages[place].full_name.encode())
    out += ["};", "",
            "const TypeIndex kTypesByName[kTypeCount] = {"
            + ", ".join(map(str, by_name)) + "};", "",
            "template <typename M>",
            "static std::optional<std::int32_t> Serial(const google::protobuf::MessageLite& message) {",
            "  const auto& m = static_cast<const M&>(message);",
            "  if (!m.has_serial()) return std::nullopt;",
            "  return m.serial();",
            "}", "",
            "std::optional<std::int32_t> SerialOf(std::size_t index,",
            "                                     const google::protobuf::MessageLite& message) {",
            "  switch (index) {"]
    for place, cpp in serials:
        out += [f"    case {place}:", f"      return Serial<::{cpp}>(message);"]
    out += ["  }", "  return std::nullopt;", "}", "", "}  // namespace virtual_modem::text", ""]
    pathlib.Path(target).write_text("\n".join(out), encoding="ascii")


if __name__ == "__main__":
    main()
