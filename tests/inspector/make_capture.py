#!/usr/bin/python3
"""Writes a capture to standard output. Each line of standard input is a packet: the seconds since
1970, > (to the modem) or <, the name of a type, the message in hex; behind that perhaps the number of
bytes that the capture keeps. "-" instead of a name makes a datagram that is no frame.
"""
import struct
import sys

sys.stdout.buffer.write(struct.pack("<IHHiIII", 0xA1B2C3D4, 2, 4, 0, 0, 65535, 101))
for line in sys.stdin:
    seconds, way, name, content, *kept = line.split()
    whole, _, fraction = seconds.partition(".")
    payload = bytes.fromhex("" if content == "-" else content)
    if name != "-":
        payload = b"VM" + struct.pack(">BBI", 0, len(name), len(payload)) + name.encode() + payload
    ports = (47601, 47602) if way == ">" else (47602, 47601)
    if way == "=":
        ports = (53, 53)
    packet = struct.pack(">BBHHHBBHII", 0x45, 0, 28 + len(payload), 0, 0, 64, 17, 0,
                         0x7F000001, 0x7F000001)
    packet += struct.pack(">HHHH", *ports, 8 + len(payload), 0) + payload
    keep = packet[:int(kept[0])] if kept else packet
    sys.stdout.buffer.write(struct.pack("<IIII", int(whole), int(fraction.ljust(6, "0")[:6]),
                                        len(keep), len(packet)) + keep)
