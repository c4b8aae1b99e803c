#!/usr/bin/python3
"""Has tshark read one capture of all cases; holds what it shows against what was written and what the
library says of it.

Usage: dissector_test.py LUA_SCRIPT CALL_EXCHANGE PEER DESCRIPTOR_SET

CALL_EXCHANGE is the example, PEER the program built from ../interop/peer.cc. Exits 77, skipped,
without tshark. The environment's SEED repeats a run.
"""
import json
import os
import pathlib
import random
import re
import shutil
import struct
import subprocess
import sys
import tempfile
import unittest
import xml.etree.ElementTree
from typing import NamedTuple

os.environ["PROTOCOL_BUFFERS_PYTHON_IMPLEMENTATION"] = "python"
TESTS = pathlib.Path(__file__).resolve().parents[1]
sys.path[:0] = [str(TESTS / "interop"), str(TESTS / "golden")]
# pylint: disable=wrong-import-position
import peer
import random_exchange
import samples
from google.protobuf.message_factory import MessageFactory

LUA_SCRIPT, CALL_EXCHANGE, PEER, DESCRIPTOR_SET = sys.argv[1:]
SEED = int(os.environ.get("SEED", random.randrange(2**32)))
TYPES = random_exchange.load(DESCRIPTOR_SET)
FIELD_NAMES = {f"virtual_modem.{field.full_name}" for kind in TYPES for field in kind.fields}
FINDINGS = {"malformed", "incomplete", "undeclared", "wire_type", "unknown_type", "unknown_field", "cut"}
TELEPHONY, MODEM, CLIENT = 47601, 47602, 47600
TRUTH = {"True": "1", "False": "0"}  # releases of tshark differ in how they show it
PLUGINS = ".local/lib/wireshark/plugins"
LOOPBACK = b"\x7f\0\0\1"
UDP_HEADERS = 28  # with IP's

Values = dict[str, list[str]]


class Packet(NamedTuple):
    data: bytes
    kept: int = 2**16  # bytes that the capture holds of it
    time: int = 0  # in microseconds


def frame(name: str, data: bytes, operation: int = 0) -> bytes:
    return struct.pack(">2sBBI", b"VM", operation, len(name), len(data)) + name.encode() + data


def datagram(payload: bytes, source: int = TELEPHONY, target: int = MODEM) -> bytes:
    size = UDP_HEADERS + len(payload)
    return struct.pack(">BBHHHBBH4s4sHHHH", 0x45, 0, size, 0, 0, 64, 17, 0, LOOPBACK, LOOPBACK,
                       source, target, size - 20, 0) + payload


def message(name: str, data: str, *how: int) -> Packet:
    return Packet(datagram(frame(name, bytes.fromhex(data)), *how))


def run(captures: list[list[Packet]], command: list[str], words: str = "") -> subprocess.CompletedProcess:
    """Runs it in a folder of its own, where the captures are 0.pcap and so on."""
    # Since release 4.4 it runs no script for root.
    nobody = {"user": 65534, "group": 65534, "extra_groups": []} if os.geteuid() == 0 else {}
    with tempfile.TemporaryDirectory() as scratch:
        os.chmod(scratch, 0o755)
        for number, packets in enumerate(captures):
            capture = struct.pack("<IHHiIII", 0xA1B2C3D4, 2, 4, 0, 0, 65535, 101)
            for data, kept, time in packets:
                held = data[:kept]
                capture += struct.pack("<IIII", time // 10**6, time % 10**6, len(held), len(data)) + held
            pathlib.Path(scratch, f"{number}.pcap").write_bytes(capture)
        plugins = pathlib.Path(scratch, PLUGINS)
        plugins.mkdir(parents=True)
        shutil.copy(LUA_SCRIPT, plugins)
        shutil.copy(pathlib.Path(LUA_SCRIPT).with_name("colorfilters"), scratch)
        # Settings have a folder of their own: not those of the user who runs this.
        return subprocess.run(
            command, cwd=scratch, env={**os.environ, "WIRESHARK_CONFIG_DIR": scratch, "HOME": scratch},
            input=words.encode(), stdout=subprocess.PIPE, stderr=subprocess.PIPE, check=False, **nobody)


def tshark(packets: list[Packet], *options: str) -> str:
    # The plugin folder and the command line may both name the script.
    script = f"lua_script:{PLUGINS}/virtual_modem.lua"
    result = run([packets], ["tshark", "-n", "-r", "0.pcap", "-X", script, *options])
    if result.returncode or result.stderr:
        raise AssertionError(f"tshark: status {result.returncode}: {result.stderr[:2000].decode()}")
    # It cuts long labels at a byte, which may be in the middle of a character.
    return result.stdout.decode(errors="replace")


def dissect(packets: list[Packet]) -> list[Values]:
    """What each packet's fields show, and as "label" how. No dissector may have failed."""
    rows = []
    for element in xml.etree.ElementTree.fromstring(tshark(packets, "-T", "pdml", "-2", "--color")):
        values: Values = {}
        for field in element.iter():
            show = field.get("show", "")
            values.setdefault(field.get("name", ""), []).append(TRUTH.get(show, show))
        values["label"] = [field.get("showname") or field.get("show", "") for field in element.iter()
                           if field.get("name", "").startswith("virtual_modem")]
        # The one finding makes the other of itself; any more are exceptions in a dissector.
        if "_ws.lua.error" in values or len(values.get("_ws.malformed", [])) != len(
                values.get("virtual_modem.malformed", [])):
            raise AssertionError(f"a dissector failed: {values}")
        rows.append(values)
    return rows


def findings(values: Values) -> set[str]:
    return {name for name in FINDINGS if f"virtual_modem.{name}" in values}


# ---- Cases ----------------------------------------------------------------------------------------
def ask(serial: int) -> bytes:  # not by the ports of all others
    return datagram(frame("Dial", bytes.fromhex(f"08 01 10 {serial:02x} 1a 01 31 20 00")), CLIENT)


def answer(serial: int, source: int = MODEM, target: int = CLIENT) -> bytes:
    return datagram(frame("NoResultResponse", bytes.fromhex(f"08 01 10 {serial:02x} 18 00")), source, target)


def pairs() -> list[Packet]:
    quoted = ask(7)  # in an error that it caused
    icmp = struct.pack(">BBHHHBBH4s4sBBHI", 0x45, 0, 28 + len(quoted), 0, 0, 64, 1, 0, LOOPBACK,
                       LOOPBACK, 3, 3, 0, 0) + quoted
    packets = [ask(7), ask(8), answer(8), answer(7), ask(7), icmp, answer(7), answer(7),
               answer(8, CLIENT, MODEM), answer(10), ask(10)]
    times = [0, 1000, 3000, 1004500, *range(2000000, 2000007)]
    return [Packet(data, time=time) for data, time in zip(packets, times)]


def example() -> list[Packet]:
    with tempfile.TemporaryDirectory() as scratch:
        path = pathlib.Path(scratch) / "demo.pcap"
        subprocess.run([CALL_EXCHANGE, "--pcap", path, "all"], stdout=subprocess.DEVNULL, check=True)
        data, at, packets = path.read_bytes(), 24, []
    while at < len(data):
        size, = struct.unpack_from("<I", data, at + 8)
        packets.append(Packet(data[at + 16:at + 16 + size]))
        at += 16 + size
    return packets


def damaged() -> list[tuple[str, bytes, int]]:
    """Type, bytes, and how many were captured: at the limits of nesting, of a tag, a length and a
    number; and random ones."""
    def groups(depth: int) -> bytes:
        return b"\x7b" * depth + b"\x7c" * depth

    fields = [groups(100), groups(101), b"\x7b\x7b\x7c\x7c" * 101, b"\x1a\0" * 101]
    fields += [b"\x1a" + random_exchange.varint(len(inner)) + inner for inner in (groups(99), groups(100))]
    fields += [bytes.fromhex(field) for field in [
        "f8 80 80 80 00 00", "f8 80 80 80 80 00 00",
        "7a 81 80 80 80 00 31", "7a 81 80 80 80 80 00 31", "7a ff ff ff ff 07", "7a 80 80 80 80 10",
        "78 ff ff ff ff ff ff ff ff ff 7f", "78 80 80 80 80 80 80 80 80 80 80 00"]]
    cases = [("RadioCallRing", bytes.fromhex("08 00 10 00") + field, 2**16) for field in fields]
    rng = random.Random(SEED)
    generator = random_exchange.Generator(rng)
    for kind in random.Random(SEED).choices(TYPES, k=600):
        data = bytearray(generator.message(kind))
        for _ in range(rng.randrange(4) if data else 0):
            data[rng.randrange(len(data))] = rng.randrange(256)
        cases.append((kind.full_name, bytes(data),
                      rng.randrange(len(data) + 1) if generator.chance(0.3) else 2**16))
    return cases


DAMAGED = damaged()
GOLDEN = [sample for path in sorted((TESTS / "golden").glob("*.txt")) for sample in samples.read(path)]
CALL = "08 05 10 01 18 91 01 20 00 28 01 30 00 38 01 40 00 4a 00 50 00 5a 00"
DIAL = datagram(frame("Dial", bytes.fromhex("08 01 10 01 1a 01 31 20 00")))
SAID = {message("Dial", data).data: f"Malformed at byte {why}" for data, why in {
    "08 01 1a 05 31": "4: 5 bytes announced, 1 left in the message",
    "1a 80 80 80 80 10": "6: over 4 billion bytes announced, 0 left in the message",
    "08 01 00": "2: a field has number 0",
    "7b 74": "1: another group ends than was begun",
    "08 01 7c": "2: a group ends that was not begun",
    "0e": "0: there is no wire type 6",
    "10 ff ff ff ff ff ff ff ff ff ff 01": "1: a number is longer than 10 bytes",
    "08 01 1d 01": "3: the message ends too early, bytes missing: 3",
}.items()} | {
    datagram(b"VM\0\4\0\0"): "The frame ends inside its header",
    datagram(frame("", b"")): "The frame names no type",
    datagram(frame("Dial", b"") + b"x"): "The frame should have 12 bytes and has 13",
    datagram(frame("Dials", b"")): "The schema has no type Dials",
}
NUMBERS = {"80 80 80 80 10": "1", "80 80 80 80 80 81 00": "1",
           "80 80 80 80 80 80 80 80 80 01": "1", "80 80 80 80 80 80 80 80 80 02": "0"}
COLORS = {"08 01 10 01 18 00": "", "08 01 10 01 18 01": "Virtual modem: the modem reports an error",
          "08 01 10 01": "Virtual modem: a receiver refuses it",
          "08 01 10 01 18": "Virtual modem: a receiver refuses it",
          "08 01 10 01 18 00 70 00": "Virtual modem: unknown to this schema"}
NOT_UTF8 = b"\xff\xc0\x80\xed\xa0\x80\xe0\x80\x80\xf0\x80\x80\x80\xf4\x90\x80\x80"
UNSAFE = b"\x1b[31m\0" + "\u202ey\u009bz\u2066\uffff\u7535".encode() + NOT_UTF8
SHOWN = r"\x1b[31m\x00\xe2\x80\xaey\xc2\x9bz\xe2\x81\xa6\xef\xbf\xbf" "\u7535" + "".join(
    f"\\x{byte:02x}" for byte in NOT_UTF8)
SUMMARIES = {
    message("RepeatUintResultIndication", "08 01 10 ff ff ff ff 0f", MODEM, TELEPHONY):
        "RepeatUintResultIndication to telephony platformtype=QCOM result=4294967295",
    Packet(datagram(frame("BoolParmRequest", bytes.fromhex(
        "08 01 10 80 80 80 80 f8 ff ff ff ff 01 18 01"), 4))):
        "BoolParmRequest to modem (call state changed) platformtype=QCOM serial=-2147483648 parm=true",
    Packet(datagram(frame("NoParmRequest", b"", 77))): "NoParmRequest to modem (operation 77)",
    Packet(datagram(frame("EmergencyNumber", b"\x0a" + bytes([len(UNSAFE)]) + UNSAFE))):
        f"EmergencyNumber to modem number={SHOWN}"}
CASES = {
    "pairs": pairs(),  # first: they name packets by their numbers
    "example": example(),
    "golden": [Packet(datagram(frame(sample.message, sample.data))) for sample in GOLDEN],
    "damaged": [Packet(datagram(frame(name, data)), UDP_HEADERS + 8 + len(name) + kept)
                for name, data, kept in DAMAGED],
    "hostile": [message("RepeatUintResultIndication", field * 10000) for field in ("7b", "78 00")],
    "said": [message("GetCurrentCallsResponse",
                     f"08 01 10 03 18 1e 22 17 {CALL} 7a 01 ff 25 01 02 03 04 20 05"),
             *map(Packet, SAID), Packet(DIAL, UDP_HEADERS + 7), Packet(DIAL, UDP_HEADERS + 12 + 3),
             Packet(datagram(b"else"))],
    "numbers": [message("NoResultResponse", "08 00 10 05 10 ff ff ff ff ff ff ff ff ff 01 18 81 80 00"),
                message("RepeatUintResultIndication", "08 00 10 07 12 06 01 ff ff ff ff 0f"),
                message("RadioCallRing", "08 00 10 00 1a 06 08 00 10 00 18 00 1a 02 20 00"),
                *(message("BoolParmRequest", f"08 00 10 00 18 {number}") for number in NUMBERS)],
    "colors": [message("NoResultResponse", data) for data in COLORS],
    "tree": [Packet(datagram(frame("Dial", bytes.fromhex("08 01 10 07 1a 01 31 20 63 70 00"), 8))),
             message("NoResultResponse", "08 01 10 07 18 00", MODEM, TELEPHONY)],
}


def collect(parsed, values: Values) -> None:
    """Adds the values of a parsed message as tshark shows them."""
    for field, value in parsed.ListFields():
        for element in value if field.label == field.LABEL_REPEATED else [value]:
            shown = values.setdefault(f"virtual_modem.{field.full_name}", [])
            if field.message_type:
                shown.append("")
                collect(element, values)
            elif field.type == field.TYPE_BYTES:
                shown.append(re.sub("[\0-\x1f]", lambda control: f"\\x{ord(control[0]):02x}",
                                    element.decode(errors="backslashreplace")))
            else:
                shown.append(str(int(element)))


class Dissector(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        # Starting tshark takes longer than reading the packets: all are in one capture.
        rows = iter(dissect([one for packets in CASES.values() for one in packets]))
        cls.rows = {name: [next(rows) for _ in packets] for name, packets in CASES.items()}

    def test_responses_find_their_requests(self):
        self.assertEqual(
            [tuple("".join(values.get(f"virtual_modem.{name}", []))
                   for name in ("request_in", "response_in", "response_time"))
             for values in self.rows["pairs"]],
            [("", "4", ""), ("", "3", ""), ("2", "", "0.002000000"), ("1", "", "1.004500000"),
             ("", "7", ""), ("", "", ""), ("5", "", "0.000002000"), ("5", "", "0.000003000"),
             ("", "", ""), ("", "", ""), ("", "", "")])

    @unittest.skipUnless(shutil.which("sharkd"), "sharkd is missing")
    def test_of_a_capture_opened_earlier_nothing_is_known(self):
        steps = [("load", {"file": "0.pcap"}), ("load", {"file": "1.pcap"}),
                 ("frames", {"filter": "virtual_modem.request_in"})]
        words = [json.dumps({"jsonrpc": "2.0", "id": 1, "method": method, "params": parameters})
                 for method, parameters in steps]
        said = run([[Packet(ask(7))], [Packet(answer(7))]], ["sharkd", "-"], "\n".join(words)).stdout
        self.assertEqual([json.loads(line)["result"] for line in said.splitlines()],
                         [{"status": "OK"}, {"status": "OK"}, []])

    def test_the_example_is_shown_as_its_page_says(self):
        page = (TESTS.parent / "docs/wireshark.md").read_text(encoding="utf-8")
        for number, values in enumerate(self.rows["example"], 1):
            if findings(values) & {"incomplete", "malformed"}:
                said = ",".join(values["_ws.expert.message"])
                self.assertIn(f'\n{number}\t{values["virtual_modem.type"][0]}\t{said}\n', page)
        # Though the capture is masked.
        self.assertEqual(set().union(*map(findings, self.rows["example"])),
                         {"incomplete", "undeclared", "unknown_field"})

    def test_every_value_of_every_type(self):
        kinds = {kind.full_name: MessageFactory().GetPrototype(kind) for kind in TYPES}
        for sample, values in zip(GOLDEN, self.rows["golden"]):
            expected: Values = {}
            collect(kinds[sample.message].FromString(sample.data), expected)
            self.assertEqual(expected, {name: shown for name, shown in values.items()
                                        if name in FIELD_NAMES}, sample.message)
            self.assertEqual(findings(values), set(), sample.message)

    def test_it_agrees_with_the_library_on_damaged_captures(self):
        answers = peer.ask(PEER, [(name, data) for name, data, _ in DAMAGED])
        for (name, data, kept), said, values in zip(DAMAGED, answers, self.rows["damaged"]):
            expected = [{"malformed"}] if not said.accepted else [set() if said.initialized else {"incomplete"}]
            if kept < len(data):
                expected = [{"cut"}, {"malformed"}][:1 if said.accepted else 2]
            self.assertIn(findings(values) & {"malformed", "incomplete", "unknown_type", "cut"}, expected,
                          f"seed {SEED}, {name} {data.hex(' ')}, kept {kept}")

    def test_what_it_says(self):
        first, *rows, other = self.rows["said"]
        self.assertEqual(first["_ws.expert.message"], [
            "30 is not declared in Radio_Errno: a receiver takes the field for absent",
            "required Call.namepresentation is missing",
            "GetCurrentCallsResponse has no field 15",
            "calls came as 32-bit: a receiver takes it for unknown",
            "calls came as varint: a receiver takes it for unknown",
            "required GetCurrentCallsResponse.error is missing"])
        self.assertEqual([values["_ws.expert.message"] for values in rows], [
            *([words] for words in SAID.values()), ["The capture ends inside the frame's header"],
            ["The capture holds 3 of the message's 9 bytes"]])
        self.assertEqual(other["data.len"], ["4"])  # left to others
        groups, unknown = self.rows["hostile"]
        self.assertIn("more than 100 levels of nesting", groups["_ws.expert.message"][0])
        self.assertLess(len(unknown["_ws.expert.message"]), 100)

    def test_numbers_and_lists_as_a_receiver_reads_them(self):
        last, several, merged, *parms = self.rows["numbers"]
        self.assertEqual((last["virtual_modem.serial"], last["virtual_modem.error"]), (["-1"], ["1"]))
        self.assertEqual(several["virtual_modem.RepeatUintResultIndication.result"],
                         ["7", "1", "4294967295"])
        self.assertEqual(findings(merged), set())  # each brings what the other lacks
        self.assertEqual([values["virtual_modem.BoolParmRequest.parm"] for values in parms],
                         [[shown] for shown in NUMBERS.values()])

    def test_colors_and_labels(self):
        self.assertEqual([values.get("frame.coloring_rule.name", [""])[0] for values in self.rows["colors"]],
                         list(COLORS.values()))
        request, response = self.rows["tree"]
        self.assertEqual(request["label"][:16], [
            "Virtual modem, Dial, serial 7", "Operation: IMS call (8)", "Length of type name: 4",
            "Length of message: 11", "Type: Dial", "Dial", "platformtype: QCOM (1)", "serial: 7", "address: 1",
            "clir: Unknown (99)", "99 is not declared in Clir: a receiver takes the field for absent",
            "Unknown field 14, varint, 2 bytes", "Dial has no field 14", "required Dial.clir is missing",
            "Serial: 7", f"Response in: {sum(map(len, CASES.values()))}"])
        self.assertEqual(response["label"][-1], "Error: RADIO_E_SUCCESS (0)")

    def test_the_summary_is_text_that_no_terminal_takes_for_a_command(self):
        lines = tshark(list(SUMMARIES), "-P").splitlines()
        self.assertEqual([re.sub(".* VirtualModem [0-9]+ ", "", line).rstrip() for line in lines],
                         list(SUMMARIES.values()))


if __name__ == "__main__":
    if shutil.which("tshark") is None:
        print("skipped: no tshark; 'scripts/setup capture' brings it")
        sys.exit(77)
    unittest.main(argv=sys.argv[:1])
