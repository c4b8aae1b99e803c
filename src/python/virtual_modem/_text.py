"""Messages as text, by the rules of the C++ library libvirtual-modem-text and to the same letter."""
import importlib.resources

from google.protobuf.descriptor import FieldDescriptor
from google.protobuf.message import Message

_VARINT, _FIXED64, _BYTES, _START, _END, _FIXED32 = range(6)

# Below this number of messages, unknown bytes that read as a message are printed as one.
_UNKNOWN_DEPTH = 10
# Groups inside one another in what the runtime wrote: it reads no more.
_DEEPEST = 100

_FOREIGN = "# a message of another library"


def _read_list(name: str) -> frozenset:
    text = importlib.resources.files(__package__).joinpath(name).read_text(encoding="utf-8")
    return frozenset(line.split("#")[0].strip() for line in text.splitlines()) - {""}


# Full names of the fields that identify a subscriber, tell where one is or carry what one says.
SUBSCRIBER_DATA = _read_list("subscriber_data.txt")

_ESCAPES = [chr(byte) if 0x20 <= byte < 0x7f else f"\\{byte:03o}" for byte in range(256)]
for _plain, _letter in zip("\n\r\t\"'\\", "nrt\"'\\"):
    _ESCAPES[ord(_plain)] = "\\" + _letter


def mask(message: Message) -> Message:
    """A copy without subscriber data and unknown fields, for a bug report.

    Each byte of a string of subscriber data becomes X, each number of it 0. Raises TypeError for a
    message of another library.
    """
    if not _is_ours(message):
        raise TypeError(f"{message.DESCRIPTOR.full_name} is a message of another library")
    copy = type(message)()
    copy.CopyFrom(message)
    copy.DiscardUnknownFields()
    _mask_fields(copy)
    return copy


def to_text(message: Message, *, show_subscriber_data: bool = False, single_line: bool = True,
            max_bytes: int = 4000) -> str:
    """The message in protobuf's text format, in ASCII; google.protobuf.text_format parses it.

    Masked as mask() does, with unknown fields left out and counted in a comment, unless
    show_subscriber_data. On one line, or a line a field, indented by two spaces a level. A text
    longer than max_bytes (0: any length) is cut and ends with how much is missing. A message of
    another library gives a comment that says so.
    """
    if not _is_ours(message):
        return _FOREIGN
    printer = _Printer(show_subscriber_data)
    printer.message(message.DESCRIPTOR, message.SerializePartialToString(), 0)
    printer.finish()
    if single_line:
        text = " ".join(line for _, line in printer.lines)
    else:
        text = "".join("  " * depth + line + "\n" for depth, line in printer.lines)
    return _cut(text, max_bytes) if 0 < max_bytes < len(text) else text


def _is_ours(message: Message) -> bool:
    return message.DESCRIPTOR.file.name.startswith("virtual_modem/")


def _mask_fields(message: Message) -> None:
    for field, value in message.ListFields():
        repeated = field.label == FieldDescriptor.LABEL_REPEATED
        if field.full_name in SUBSCRIBER_DATA:
            if repeated:
                value[:] = [_masked(one) for one in value]
            else:
                setattr(message, field.name, _masked(value))
        elif field.type == FieldDescriptor.TYPE_MESSAGE:
            for one in value if repeated else [value]:
                _mask_fields(one)


def _masked(value):
    if isinstance(value, int):
        return 0
    # What is not UTF-8 comes as bytes. A string takes bytes too.
    return b"X" * len(value.encode() if isinstance(value, str) else value)


def _cut(text: str, max_bytes: int) -> str:
    def mark(missing: int) -> str:
        return f" [... {missing} more bytes]"
    # The more is cut, the longer may the mark be: the longest decides.
    kept = max(max_bytes - len(mark(len(text))), 0)
    return text[:kept] + mark(len(text) - kept)


def _read_varint(data: bytes, at: int) -> tuple:
    value = 0
    for shift in range(0, 70, 7):
        if at == len(data):
            break
        byte = data[at]
        at += 1
        value |= (byte & 0x7f) << shift
        if byte < 0x80:
            return value & 0xffffffffffffffff, at
    raise ValueError("not a varint")


def _read(data: bytes, at: int = 0, group: int = 0, depth: int = _DEEPEST) -> tuple:
    """The fields from at on up to the end of group (0: of data), and where they end.

    A field is number, wire type, value and size; the value of a group is the list of its fields, with
    at most depth of them inside one another. ValueError when the bytes are no fields.
    """
    fields: list = []
    while at < len(data):
        start = at
        tag, at = _read_varint(data, at)
        number, wire_type = (tag & 0xffffffff) >> 3, tag & 7
        if wire_type == _END and group and number == group:
            return fields, at
        if number == 0:
            raise ValueError("field number 0")
        if wire_type == _VARINT:
            value, at = _read_varint(data, at)
        elif wire_type == _START and depth > 0:
            value, at = _read(data, at, number, depth - 1)
        elif wire_type in (_BYTES, _FIXED32, _FIXED64):
            if wire_type == _BYTES:
                size, at = _read_varint(data, at)
                size &= 0xffffffff
            else:
                size = 4 if wire_type == _FIXED32 else 8
            value = data[at:at + size]
            at += size
            if at > len(data):
                raise ValueError("too short")
        else:
            raise ValueError("no field begins so")
        fields.append((number, wire_type, value, at - start))
    if group:
        raise ValueError("a group does not end")
    return fields, at


class _Printer:
    """Turns encoded bytes into lines, each with its depth."""

    def __init__(self, show: bool):
        self.lines: list = []
        self._show = show
        self._hidden = 0
        self._hidden_bytes = 0

    def message(self, descriptor, data: bytes, depth: int) -> None:
        for number, wire_type, value, size in _read(data)[0]:
            field = descriptor.fields_by_number.get(number)
            if field is not None and field.type == FieldDescriptor.TYPE_MESSAGE and wire_type == _BYTES:
                self.lines.append((depth, f"{field.name} {{"))
                self.message(field.message_type, value, depth + 1)
                self.lines.append((depth, "}"))
            elif field is not None and (text := self._value(field, wire_type, value)) is not None:
                self.lines.append((depth, f"{field.name}: {text}"))
            elif self._show:
                self._unknown(number, wire_type, value, depth, _UNKNOWN_DEPTH)
            else:
                self._hidden += 1
                self._hidden_bytes += size

    def finish(self) -> None:
        if self._hidden:
            fields = "field" if self._hidden == 1 else "fields"
            self.lines.append(
                (0, f"# {self._hidden} unknown {fields}, {self._hidden_bytes} bytes, not shown"))

    def _value(self, field, wire_type: int, value):
        """The text of a declared field; None when it is none: of another type, or undeclared."""
        masked = not self._show and field.full_name in SUBSCRIBER_DATA
        if field.type in (FieldDescriptor.TYPE_STRING, FieldDescriptor.TYPE_BYTES):
            return _quoted(b"X" * len(value) if masked else value) if wire_type == _BYTES else None
        if wire_type != _VARINT or field.type == FieldDescriptor.TYPE_MESSAGE:
            return None
        if field.type == FieldDescriptor.TYPE_BOOL:
            return "true" if value else "false"
        number = value & 0xffffffff
        if number >= 2**31 and field.type != FieldDescriptor.TYPE_UINT32:
            number -= 2**32
        if field.type == FieldDescriptor.TYPE_ENUM:
            declared = field.enum_type.values_by_number.get(number)
            return None if declared is None else declared.name
        return "0" if masked else str(number)

    def _unknown(self, number: int, wire_type: int, value, depth: int, budget: int) -> None:
        fields = value if wire_type == _START else None
        if wire_type == _BYTES and value and budget > 0:
            try:
                fields = _read(value, depth=budget)[0]
            except ValueError:
                pass  # a string, then
        if fields is not None:
            self.lines.append((depth, f"{number} {{"))
            for inner_number, inner_type, inner, _ in fields:
                self._unknown(inner_number, inner_type, inner, depth + 1, budget - 1)
            self.lines.append((depth, "}"))
        elif wire_type == _BYTES:
            self.lines.append((depth, f"{number}: {_quoted(value)}"))
        elif wire_type == _VARINT:
            self.lines.append((depth, f"{number}: {value}"))
        else:
            self.lines.append((depth, f"{number}: 0x{value[::-1].hex()}"))


def _quoted(value: bytes) -> str:
    return '"' + "".join(map(_ESCAPES.__getitem__, value)) + '"'
