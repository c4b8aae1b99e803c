"""Shows messages in gdb: print a Dial, and the fields that are present are named, with their values.

(gdb) source PREFIX/share/virtual-modem-protos/gdb/virtual_modem.py    # that of a package is found
(gdb) print dial
$1 = Dial {platformtype = MTK, serial = 1, address = <13 bytes>, clir = CLIR_DEFAULT}

Subscriber data is masked, and so is what unknown fields hold; `set $show_subscriber_data = 1` shows
it. Memory is read and nothing is called: a core file will do. Compile the program with -g; the compiler
leaves the classes to the debug information of the library. Where there is none, compile with -g
-femit-class-debug-always (clang: -g -fstandalone-debug). Strings are read as the C++ library of g++ has
them.
"""
import types
from typing import Optional

import gdb.printing
import gdb.types

# For each message its fields as they are declared: the enumeration if of one, whether subscriber data,
# the number.
FIELDS: dict[str, dict[str, tuple[str, bool, int]]] = {}
ALWAYS = "-femit-class-debug-always (clang: -fstandalone-debug)"
POINTER_TAGS = 3  # the low bits of the runtime's pointers to strings and to unknown fields


def string(address: int, hidden: bool) -> str:
    value = gdb.Value(address & ~POINTER_TAGS).cast(gdb.lookup_type("std::string").pointer())
    size = int(value["_M_string_length"])
    if hidden or size == 0:
        return f"<{size} bytes>" if hidden else '""'
    return value["_M_dataplus"]["_M_p"].lazy_string(length=size).value().format_string()


def single(value: gdb.Value, enumeration: str, hidden: bool) -> str:
    """One value of a field."""
    kind = value.type.strip_typedefs()
    if kind.code == gdb.TYPE_CODE_PTR:
        return message(value.dereference())
    if kind.name.endswith("::ArenaStringPtr"):
        return string(int(value["tagged_ptr_"]["ptr_"]), hidden)
    if hidden:
        return "<masked>"
    if enumeration:
        for choice in gdb.lookup_type(enumeration).fields():
            if choice.enumval == int(value):
                return choice.name.rpartition("::")[2]
    return str(int(value)) if kind.code == gdb.TYPE_CODE_INT else str(value)


def repeated(value: gdb.Value, *how) -> str:
    element = value.type.strip_typedefs().template_argument(0)
    size, limit = int(value["current_size_"]), gdb.parameter("print elements") or 10000
    words = []
    for index in range(min(size, limit)):
        if "::RepeatedField<" in value.type.strip_typedefs().name:
            words.append(single(value["arena_or_elements_"].cast(element.pointer())[index], *how))
        elif "basic_string" in element.strip_typedefs().name:
            words.append(string(int(value["rep_"]["elements"][index]), how[1]))
        else:
            words.append(single(value["rep_"]["elements"][index].cast(element.pointer()), *how))
    return f"[{', '.join(words)}{', ...' if size > limit else ''}]"


def message(value: gdb.Value) -> str:
    name = value.type.unqualified().strip_typedefs().name.replace("::", ".")
    if "_impl_" not in (name for name, _ in gdb.types.deep_items(value.type.strip_typedefs())):
        return f"{name} {{<no debug information of this class: compile with {ALWAYS}>}}"
    data = value["_impl_"]
    members = {field.name: str(field.type.strip_typedefs()) for field in data.type.fields()
               if hasattr(field, "bitpos") and field.name not in ("_has_bits_", "_cached_size_")}
    lists = {member for member in members if "::Repeated" in members[member]}
    # The runtime's compiler numbers presence bits as it lays out the members that are not repeated.
    bits = {member: bit for bit, member in enumerate(m for m in members if m not in lists)}
    words, masked = [], not gdb.convenience_variable("show_subscriber_data")
    for field, (enumeration, subscriber_data, _) in FIELDS[name].items():
        member, how = field + "_", (enumeration, subscriber_data and masked)
        try:
            if member in lists:
                if int(data[member]["current_size_"]):
                    words.append(f"{field} = {repeated(data[member], *how)}")
            elif int(data["_has_bits_"]["has_bits_"][bits[member] // 32]) >> bits[member] % 32 & 1:
                words.append(f"{field} = {single(data[member], *how)}")
        except gdb.error as error:
            words.append(f"{field} = <{error}>")
    return f"{name} {{{', '.join(words + unknown(value, name, masked))}}}"


def unknown(value: gdb.Value, name: str, hidden: bool) -> list[str]:
    """The unknown fields: the message's second word leads to the arena's address and this string."""
    word = gdb.lookup_type("void").pointer()
    tagged = int(value.address.cast(word.pointer())[1])
    if not tagged & 1:
        return []
    address = (tagged & ~POINTER_TAGS) + word.sizeof
    if not hidden:
        return [f"unknown fields = {string(address, False)}"]
    text = gdb.Value(address).cast(gdb.lookup_type("std::string").pointer())
    size = int(text["_M_string_length"])
    place = int(text["_M_dataplus"]["_M_p"])
    memory = gdb.selected_inferior().read_memory(place, size) if size else b""
    return [f"unknown fields = <{', '.join(listed(bytes(memory), name))}>"]


def listed(data: bytes, name: str) -> list[str]:
    """The number and size of each field; of an enumeration's, the number that it does not declare."""
    enumerations = {number: field for field, (declared, _, number) in FIELDS[name].items() if declared}
    words, at, start, groups = [], 0, 0, 0
    while at < len(data):
        start = start if groups else at
        tag, at = varint(data, at)
        value, wire_type = 0, tag & 7
        if wire_type in (0, 2):
            value, at = varint(data, at)
        at += {1: 8, 2: value, 5: 4}.get(wire_type, 0)
        groups += {3: 1, 4: -1}.get(wire_type, 0)
        if groups == 0 and wire_type == 0 and tag >> 3 in enumerations:
            words.append(f"{enumerations[tag >> 3]} = {(value + 2**31) % 2**32 - 2**31}")
        elif groups == 0:
            words.append(f"{tag >> 3} ({at - start} bytes)")
    return words


def varint(data: bytes, at: int) -> tuple[int, int]:
    """A number and where it ends; what is cut, as a parse that failed may leave it, ends there."""
    value = shift = 0
    while at < len(data):
        value |= (data[at] & 0x7f) << shift
        shift += 7
        at += 1
        if data[at - 1] < 0x80:
            break
    return value, at


def virtual_modem(value: gdb.Value) -> Optional[types.SimpleNamespace]:
    name = value.type.unqualified().strip_typedefs().name
    known = name and name.replace("::", ".") in FIELDS
    return types.SimpleNamespace(to_string=lambda: message(value)) if known else None


gdb.printing.register_pretty_printer(gdb.current_objfile(), virtual_modem, replace=True)
