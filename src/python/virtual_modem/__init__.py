"""The messages of the virtual modem, and their text with subscriber data masked.

The classes are in a module a unit: radio_pb2, ims_service_pb2 and so on. TYPES has all of them by the
name that a channel carries beside the bytes.

    >>> import virtual_modem
    >>> from virtual_modem import radio_pb2 as radio
    >>> dial = radio.Dial(platformtype=radio.QCOM, serial=7, address="112", clir=radio.CLIR_DEFAULT)
    >>> virtual_modem.to_text(dial)
    'platformtype: QCOM serial: 7 address: "XXX" clir: CLIR_DEFAULT'
    >>> virtual_modem.mask(dial).address
    'XXX'
    >>> dial.DESCRIPTOR.full_name  # its name in TYPES
    'Dial'
"""
import importlib
import pkgutil

from virtual_modem._text import SUBSCRIBER_DATA, mask, to_text

__all__ = ["SUBSCRIBER_DATA", "TYPES", "mask", "to_text"]

__version__ = "@PROJECT_VERSION@"

# Full name -> class, such as TYPES["Dial"] or TYPES["virtualdata.proto.SlaveSetupDataCallRequest"].
TYPES = {
    descriptor.full_name: getattr(unit, name)
    for module in pkgutil.iter_modules(__path__) if module.name.endswith("_pb2")
    for unit in (importlib.import_module(f"{__name__}.{module.name}"),)
    for name, descriptor in unit.DESCRIPTOR.message_types_by_name.items()
}
