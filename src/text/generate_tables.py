#!/usr/bin/python3
"""Writes the tables of libvirtual-modem-text from the schema.

Usage: generate_tables.py DESCRIPTOR_SET SUBSCRIBER_DATA OUTPUT

DESCRIPTOR_SET has the comments of the schema: the first word of a message's is its kind. What the
tables cannot say (a field of another type, say) is refused with its name.
"""
import pathlib
import sys

from google.protobuf.descriptor_pb2 import FieldDescriptorProto, FileDescriptorSet

KINDS = ("Request", "Response", "Indication", "Record")
FIELD_KINDS = {
    FieldDescriptorProto.TYPE_INT32: "kInt32",
    FieldDescriptorProto.TYPE_UINT32: "kUint32",
    FieldDescriptorProto.TYPE_BOOL: "kBool",
    FieldDescriptorProto.TYPE_ENUM: "kEnum",
    FieldDescriptorProto.TYPE_STRING: "kString",
    FieldDescriptorProto.TYPE_MESSAGE: "kMessage",
}
MASKED_KINDS = ("kString", "kInt32", "kUint32")
MESSAGE_IN_FILE = 4  # field number of message_type in FileDescriptorProto, for paths of comments
NAME_PADDING = 32  # kNamePadding
# Names of the numbers of an enumeration from its lowest on are kept at hand, so many at most.
MOST_SLOTS = 600


def refuse(what: str) -> None:
    sys.exit(f"generate_tables.py: {what}")


def message_kinds(file) -> dict[int, str]:
    """The kind of each message of a file, by its place."""
    comments = {location.path[1]: location.leading_comments
                for location in file.source_code_info.location
                if len(location.path) == 2 and location.path[0] == MESSAGE_IN_FILE}
    kinds = {}
    for place, message in enumerate(file.message_type):
        first = (comments.get(place, "").split() or [""])[0].strip(":,.")
        if first not in KINDS:
            refuse(f"{file.name}: the comment of {message.name} begins with '{first}', not with its "
                   f"kind: {', '.join(KINDS)}")
        kinds[place] = first
    return kinds


class Names:
    """All field names in one string, each once."""

    def __init__(self) -> None:
        self.text = ""
        self.places: dict[str, int] = {}

    def place(self, name: str) -> int:
        if len(name) > NAME_PADDING:
            refuse(f"the name {name} is longer than {NAME_PADDING} bytes")
        if name not in self.places:
            self.places[name] = len(self.text)
            self.text += name
        return self.places[name]


def main() -> None:
    source, subscriber_file, target = sys.argv[1:]
    files = FileDescriptorSet()
    files.ParseFromString(pathlib.Path(source).read_bytes())
    lines = (line.split("#")[0].strip()
             for line in pathlib.Path(subscriber_file).read_text(encoding="utf-8").splitlines())
    subscriber_data = set(filter(None, lines))

    messages = []  # full name, C++ class, unit, kind, descriptor
    enums = {}  # full name -> C++ type and its numbers, in order
    for file in files.file:
        unit = pathlib.PurePath(file.name).stem
        prefix = file.package + "." if file.package else ""
        scope = "::" + prefix.replace(".", "::")
        kinds = message_kinds(file)
        messages += [(prefix + m.name, scope + m.name, unit, kinds[place], m)
                     for place, m in enumerate(file.message_type)]
        enums.update({prefix + e.name: (scope + e.name, [v.number for v in e.value])
                      for e in file.enum_type})
    index = {name: place for place, (name, *_) in enumerate(messages)}
    enum_index = {name: place for place, name in enumerate(enums)}

    names, message_rows, field_rows, used_enums = Names(), [], [], set()
    for name, _, _, _, message in messages:
        if message.nested_type or message.enum_type or message.oneof_decl:
            refuse(f"{name}: nested declarations and oneofs have no place in the tables")
        by_number = {f.number: f for f in message.field}
        highest = max(by_number, default=0)
        if highest > 2 * len(by_number) + 16:
            refuse(f"{name}: field numbers up to {highest} are too sparse")
        message_rows.append(f"{{{len(field_rows)}, {highest}}},  // {name}")
        for number in range(1, highest + 1):
            if number not in by_number:
                field_rows.append("{},")
                continue
            f = by_number[number]
            full = f"{name}.{f.name}"
            if f.type not in FIELD_KINDS:
                refuse(f"{full}: type {FieldDescriptorProto.Type.Name(f.type)} has no place in the tables")
            kind = FIELD_KINDS[f.type]
            masked = full in subscriber_data
            subscriber_data.discard(full)
            if masked and kind not in MASKED_KINDS:
                refuse(f"{full}: subscriber data of this type cannot be masked")
            below = 0
            if kind == "kMessage":
                below = index[f.type_name.lstrip(".")]
            elif kind == "kEnum":
                used_enums.add(f.type_name.lstrip("."))
                below = enum_index[f.type_name.lstrip(".")]
            flags = (f.label == FieldDescriptorProto.LABEL_REPEATED,
                     f.label == FieldDescriptorProto.LABEL_REQUIRED, masked)
            field_rows.append(f"{{{names.place(f.name)}, {len(f.name)}, {number}, {below}, FieldKind::{kind}, "
                              + ", ".join("true" if flag else "false" for flag in flags) + "},")
    if subscriber_data:
        refuse(f"subscriber data that no message has: {', '.join(sorted(subscriber_data))}")

    out = ["// Made from the descriptor set by generate_tables.py; do not edit.",
           '#include "text/generated.h"',
           "",
           "#include <atomic>",
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
           "constexpr Field kFields[] = {", *field_rows, "};",
           f'constexpr char kNames[{len(names.text)} + kNamePadding + 1] = "{names.text}";',
           "",
           "// Null for an enumeration that no field has.",
           "const std::string* LibraryName(unsigned enumeration, std::int32_t number) {",
           "  switch (enumeration) {"]
    slots, slot_rows = 0, []
    for name, (cpp, numbers) in enums.items():
        if name not in used_enums:
            slot_rows.append(f"{{0, 0, 0}},  // {name}")
            continue
        out += [f"    case {enum_index[name]}:",
                f"      return &{cpp}_Name(static_cast<{cpp}>(number));"]
        first = min(numbers)
        count = max(n for n in numbers if n - first < MOST_SLOTS) - first + 1
        slot_rows.append(f"{{{slots}, {count}, {first}}},  // {name}")
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
            "const Tables kTables{kMessages, kFields, kNames, EnumName, nullptr};", "",
            "const Type kTypes[kTypeCount] = {"]
    serials = []
    for place, (name, cpp, unit, kind, message) in enumerate(messages):
        fields = {f.name: f for f in message.field}
        if "serial" in fields:
            if fields["serial"].type != FieldDescriptorProto.TYPE_INT32:
                refuse(f"{name}.serial is no int32")
            serials.append((place, cpp))
        scope, _, plain = cpp.rpartition("::")
        instance = f"{scope}::_{plain}_default_instance_"
        out.append(f'    {{"{name}", "{unit}", Kind::k{kind}, '
                   f"reinterpret_cast<const google::protobuf::MessageLite*>(&{instance}), "
                   f"{str('serial' in fields).lower()}, {str('error' in fields).lower()}}},")
    by_name = sorted(range(len(messages)), key=lambda place: messages[place][0].encode())
    out += ["};", "",
            "const std::uint8_t kTypesByName[kTypeCount] = {"
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
        out += [f"    case {place}:", f"      return Serial<{cpp}>(message);"]
    out += ["  }", "  return std::nullopt;", "}", "", "}  // namespace virtual_modem::text", ""]
    pathlib.Path(target).write_text("\n".join(out), encoding="ascii")


if __name__ == "__main__":
    main()
