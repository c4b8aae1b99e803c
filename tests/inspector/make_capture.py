#!/usr/bin/python3
"""Writes a capture to standard output. Each line of standard input is a packet: the seconds since
1970, > (to the modem), < or the ports FROM:TO, the name of a type, perhaps with /OPERATION, the message
in hex; after that perhaps the number of bytes that the capture keeps. "-" instead of a name makes a
datagram that is no frame, "=" instead of a way an IP packet of the bytes alone.

Usage: make_capture.py [FORMAT [LINK_TYPE [LINK_HEADER]]]
FORMAT is pcap, nano, big or big-nano (pcap by nanoseconds, of a machine of the other order), or pcapng, perhaps
with :DIGITS of its seconds.
"""
import struct
import sys

form, link, header = sys.argv[1:] + ["pcap", "101", ""][len(sys.argv) - 1:]
order = ">" if form.startswith("big") else "<"
form, _, digits = form.partition(":")
digits = int(digits or (9 if form.endswith("nano") else 6))  # of the fraction of a second


def put(layout: str, *values: int) -> None:
    sys.stdout.buffer.write(struct.pack(order + layout, *values))


if form == "pcapng":
    put("IIIHHqI", 0x0A0D0D0A, 28, 0x1A2B3C4D, 1, 0, -1, 28)
    put("IIHHIHHIII", 1, 32, int(link), 0, 0, 9, 1, digits, 0, 32)
else:
    put("IHHiIII", 0xA1B23C4D if digits == 9 else 0xA1B2C3D4, 2, 4, 0, 0, 65535, int(link))
for line in sys.stdin:
    seconds, way, name, content, *kept = line.split()
    whole, _, fraction = seconds.partition(".")
    packet = bytes.fromhex("" if content == "-" else content)
    if name != "-":
        name, _, operation = name.partition("/")
        packet = (b"VM" + struct.pack(">BBI", int(operation or 0), len(name), len(packet)) +
                  name.encode() + packet)
    if way != "=":
        ports = {">": "47601:47602", "<": "47602:47601"}.get(way, way).split(":")
        packet = (struct.pack(">BBHHHBBHII", 0x45, 0, 28 + len(packet), 0, 0, 64, 17, 0,
                              0x7F000001, 0x7F000001) +
                  struct.pack(">HHHH", *map(int, ports), 8 + len(packet), 0) + packet)
    packet = bytes.fromhex(header) + packet
    keep = packet[:int(kept[0])] if kept else packet
    time = (int(whole), int(fraction.ljust(digits, "0")[:digits] or 0))
    if form == "pcapng":
        padding = -len(keep) % 4
        put("IIIIIII", 6, 32 + len(keep) + padding, 0, *divmod(time[0] * 10**digits + time[1], 2**32),
            len(keep), len(packet))
        sys.stdout.buffer.write(keep + bytes(padding))
        put("I", 32 + len(keep) + padding)
    else:
        put("IIII", *time, len(keep), len(packet))
        sys.stdout.buffer.write(keep)
