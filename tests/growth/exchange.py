"""What the programs of two releases make of each other's Dial. Usage: exchange.py OLD_BUILD NEW_BUILD"""
import pathlib
import subprocess
import sys

import peer

OLD, NEW = map(pathlib.Path, sys.argv[1:])
KNOWN = 'platformtype: MTK serial: 1 address: "112" clir: CLIR_DEFAULT'


def encode(build: pathlib.Path, text: str) -> bytes:
    return subprocess.run([build / "bin/virtual-modem-inspect", "encode", "Dial", "-"],
                          input=text.encode(), stdout=subprocess.PIPE, check=True).stdout


def read(build: pathlib.Path, data: bytes) -> peer.Answer:
    return peer.ask(str(build / "tests/interop_peer"), [("Dial", data)])[0]


grown = encode(NEW, KNOWN + ' subaddress: "77" placedat: 1700000000000')
hidden = encode(NEW, KNOWN.replace("CLIR_DEFAULT", "CLIR_TEMPORARY"))
before = encode(OLD, KNOWN)
for what, holds in {
        "old reads new bytes and writes the new fields back": read(OLD, grown)
        == peer.Answer(True, True, grown),
        "old takes a new value for absent and keeps it": read(OLD, hidden).accepted
        and not read(OLD, hidden).initialized
        and read(NEW, read(OLD, hidden).data) == peer.Answer(True, True, hidden),
        "new reads old bytes and writes them back": read(NEW, before) == peer.Answer(True, True, before),
}.items():
    if not holds:
        sys.exit(f"not so: {what}")
    print(f"    {what}")
