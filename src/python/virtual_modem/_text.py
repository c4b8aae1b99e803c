"""Messages as text and masked copies, by the rules of the C++ library libvirtual-modem-text."""
import importlib.resources

from google.protobuf import text_format
from google.protobuf.descriptor import FieldDescriptor
from google.protobuf.message import Message
from google.protobuf.unknown_fields import UnknownFieldSet

_VARINT, _FIXED64, _BYTES, _GROUP, _END, _FIXED32 = range(6)

_FOREIGN = "# a message of another library"


def _read_list(name: str) -> frozenset:
    text = importlib.resources.files(__package__).joinpath(name).read_text(encoding="utf-8")
    return frozenset(line.split("#")[0].strip() for line in text.splitlines()) - {""}


# Full names of the fields that identify a subscriber, tell where one is or carry what one says.
SUBSCRIBER_DATA = _read_list("subscriber_data.txt")


def mask(message: Message) -> Message:
    """A copy without subscriber data, for a bug report.

    Each byte of a string of subscriber data becomes X, each number of it 0. So do the values of unknown
    fields, of which nobody knows what they hold; numbers that an enumeration does not declare stay.
    Raises TypeError for a message of another library.
    """
    if not _is_ours(message):
        raise TypeError(f"{message.DESCRIPTOR.full_name} is a message of another library")
    return _masked_copy(message, [])


def to_text(message: Message, *, show_subscriber_data: bool = False, single_line: bool = True,
            max_bytes: int = 4000) -> str:
    """The message in protobuf's text format, in ASCII; google.protobuf.text_format parses it.

    Masked as mask() does, with unknown fields named in a comment, unless show_subscriber_data. On one
    line, or a line a field, indented by two spaces a level. A text longer than max_bytes (0: any length)
    is cut and ends with how much is missing. A message of another library gives a comment that says so.
    """
    if not _is_ours(message):
        return _FOREIGN
    unknown: list = []
    if not show_subscriber_data:
        message = _masked_copy(message, unknown)
    text = text_format.MessageToString(message, as_one_line=single_line,
                                       print_unknown_fields=show_subscriber_data)
    if unknown:
        comment = f"# unknown fields {', '.join(unknown)}"
        text = (text + " " + comment).lstrip() if single_line else text + comment + "\n"
    return _cut(text, max_bytes) if 0 < max_bytes < len(text) else text


def _is_ours(message: Message) -> bool:
    return message.DESCRIPTOR.file.name.startswith("virtual_modem/")


def _masked_copy(message: Message, unknown: list) -> Message:
    copy = type(message)()
    copy.CopyFrom(message)
    copy.DiscardUnknownFields()
    _mask_fields(message, copy, "", unknown)
    return copy


def _mask_fields(message: Message, copy: Message, path: str, unknown: list) -> None:
    """Masks the copy, which has none of the unknown fields, and adds these masked.

    Adds to unknown what there is to say of them, such as "calls[0].15 (2 bytes)".
    """
    for field, value in message.ListFields():
        repeated = field.label == FieldDescriptor.LABEL_REPEATED
        if field.full_name in SUBSCRIBER_DATA:
            if repeated:
                getattr(copy, field.name)[:] = map(_masked, value)
            else:
                setattr(copy, field.name, _masked(value))
        elif field.type == FieldDescriptor.TYPE_MESSAGE and repeated:
            for index, (one, to) in enumerate(zip(value, getattr(copy, field.name))):
                _mask_fields(one, to, f"{path}{field.name}[{index}].", unknown)
        elif field.type == FieldDescriptor.TYPE_MESSAGE:
            _mask_fields(value, getattr(copy, field.name), f"{path}{field.name}.", unknown)
    fields = message.DESCRIPTOR.fields_by_number
    for one in UnknownFieldSet(message):
        field = fields.get(one.field_number)
        name = path + (field.name if field else str(one.field_number))
        undeclared = field is not None and field.enum_type is not None and one.wire_type == _VARINT
        encoded = _encoded(one, undeclared)
        if undeclared:
            number = (one.data + 2**31) % 2**32 - 2**31
            unknown.append(f"{name} = {number}")
        else:
            unknown.append(f"{name} ({len(encoded)} bytes)")
        copy.MergeFromString(encoded)


def _masked(value):
    if isinstance(value, int):
        return 0
    # What is not UTF-8 comes as bytes. A string takes bytes too.
    return b"X" * len(value.encode() if isinstance(value, str) else value)


def _encoded(field, shown: bool = False) -> bytes:
    """An unknown field as it is sent, its value masked unless shown."""
    tag = _varint(field.field_number << 3 | field.wire_type)
    if field.wire_type == _VARINT:
        value = _varint(field.data)
        return tag + (value if shown else b"\x80" * (len(value) - 1) + b"\0")
    if field.wire_type == _BYTES:
        return tag + _varint(len(field.data)) + b"X" * len(field.data)
    if field.wire_type == _GROUP:
        return tag + b"".join(map(_encoded, field.data)) + _varint(field.field_number << 3 | _END)
    return tag + bytes(4 if field.wire_type == _FIXED32 else 8)


def _varint(value: int) -> bytes:
    out = bytearray()
    while value > 0x7f:
        out.append(value & 0x7f | 0x80)
        value >>= 7
    return bytes(out + bytes([value]))


def _cut(text: str, max_bytes: int) -> str:
    def mark(missing: int) -> str:
        return f" [... {missing} more bytes]"
    # The more is cut, the longer may the mark be: the longest decides.
    kept = max(max_bytes - len(mark(len(text))), 0)
    return text[:kept] + mark(len(text) - kept)
