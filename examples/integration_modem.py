#!/usr/bin/python3
"""A modem for integration_client to talk to, with the faults that a client must bear.

Usage: integration_modem.py CLIENT [ARGUMENT...]

Starts CLIENT with the path of a socket and the arguments, and ends with its status. The Python package
virtual_modem is on the module path.
"""
import pathlib
import socket
import subprocess
import sys
import tempfile

import virtual_modem

CURRENT_CALLS, CALL_STATE_CHANGED, LAST_CALL_FAIL_CAUSE = 3, 4, 5
PATIENCE = 30  # seconds for what the client has to do


class Modem:
    """The modem's end of one connection: packets as the client's WriteFrame() makes them."""

    def __init__(self, link):
        self.link = link

    def receive(self, name, operation=0):
        """The next message, which must be of this type and operation."""
        packet = self.link.recv(65536)
        at = 8 + packet[3]
        got = packet[8:at].decode(), packet[2]
        assert got == (name, operation), f"{got} instead of {(name, operation)}"
        assert int.from_bytes(packet[4:8], "big") == len(packet) - at
        return virtual_modem.TYPES[name].FromString(packet[at:])

    def send(self, name, operation=0, partial=False, **fields):
        message = virtual_modem.TYPES[name](platformtype=1, **fields)
        self.send_bytes(name, operation,
                        message.SerializePartialToString() if partial
                        else message.SerializeToString())

    def send_bytes(self, name, operation, content):
        self.link.send(b"VM" + bytes([operation, len(name)]) + len(content).to_bytes(4, "big")
                       + name.encode() + content)

    def send_calls(self, serial, *states):
        self.send("GetCurrentCallsResponse", CURRENT_CALLS, serial=serial, error=0, calls=[
            dict(index=1, state=state, toa=145, ismpty=False, ismt=False, als=False, isvoice=True,
                 isvoiceprivacy=False, number="+861012345678", numberpresentation=0, name="",
                 namepresentation=0) for state in states])


DIALING, ACTIVE = 2, 0


def play(modem):
    """One call; every fault that the page tells of comes once."""
    dial = modem.receive("Dial")
    # The calls change before the request is answered: indications keep no order with responses.
    modem.send("NoResultIndication", CALL_STATE_CHANGED)
    listing = modem.receive("NoParmRequest", CURRENT_CALLS)
    modem.send("NoResultResponse", serial=dial.serial, error=0)
    modem.send("NoResultResponse", serial=dial.serial, error=0)
    # A type that the client does not have, a technology that it does not know, broken bytes.
    modem.send_bytes("AddedLater", 0, b"\x08\x01")
    modem.send_bytes("VoiceRadioTechChanged", 0, b"\x08\x01\x10\x63")
    modem.send_bytes("RadioCallRing", 0, b"\x08\x01\x10")
    modem.send_calls(listing.serial, DIALING)

    # The same type for another operation, which means nothing to the client.
    modem.send("NoResultIndication", 200)
    modem.send("VoiceRadioTechChanged", technology=14)
    modem.send("NoResultIndication", CALL_STATE_CHANGED)
    modem.send_calls(modem.receive("NoParmRequest", CURRENT_CALLS).serial, ACTIVE)

    # The call is hung up, but the response comes after the client has ceased to wait for it.
    hangup = modem.receive("Hangup")
    listing = modem.receive("NoParmRequest", CURRENT_CALLS)
    modem.send("NoResultResponse", serial=hangup.serial, error=0)
    modem.send_calls(listing.serial)

    # A failure without the cause, which a response must hold all the same.
    modem.send("LastCallFailureCauseResponse", LAST_CALL_FAIL_CAUSE, partial=True, error=1,
               serial=modem.receive("NoParmRequest", LAST_CALL_FAIL_CAUSE).serial)


def run(command, script=play, **options):
    """Starts the client against the script; the finished process."""
    with tempfile.TemporaryDirectory() as scratch, \
            socket.socket(socket.AF_UNIX, socket.SOCK_SEQPACKET) as listener:
        path = str(pathlib.Path(scratch, "modem"))
        listener.bind(path)
        listener.listen()
        listener.settimeout(PATIENCE)
        with subprocess.Popen([command[0], path, *command[1:]], text=True, **options) as client:
            link, _ = listener.accept()
            with link:
                link.settimeout(PATIENCE)
                script(Modem(link))
            output, errors = client.communicate()
    return subprocess.CompletedProcess(command, client.returncode, output, errors)


if __name__ == "__main__":
    if len(sys.argv) < 2:
        sys.exit(__doc__)
    sys.exit(run(sys.argv[1:]).returncode)
