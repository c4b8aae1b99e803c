#!/usr/bin/python3
"""Has tshark read captures; holds what it shows against what was written and the library says.

Usage: dissector_test.py LUA_SCRIPT CALL_EXCHANGE PEER DESCRIPTOR_SET [TEST...]

CALL_EXCHANGE is the example, PEER the program made from ../interop/peer.cc. Exits 77, skipped,
without tshark. The environment's SEED repeats a run.
"""
import contextlib
import dataclasses
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

os.environ["PROTOCOL_BUFFERS_PYTHON_IMPLEMENTATION"] = "python"
TESTS = pathlib.Path(__file__).resolve().parents[1]
sys.path[:0] = [str(TESTS / "interop"), str(TESTS / "golden")]
# pylint: disable=wrong-import-position
import peer
import random_exchange
import samples
from google.protobuf.message_factory import MessageFactory

LUA_SCRIPT, CALL_EXCHANGE, PEER, DESCRIPTOR_SET = sys.argv[1:5]
SEED = int(os.environ.get("SEED", random.randrange(2**32)))
TYPES = random_exchange.load(DESCRIPTOR_SET)
TYPE_NAMES = {descriptor.full_name for descriptor in TYPES}
FIELD_NAMES = {f"virtual_modem.{field.full_name}"
               for descriptor in TYPES for field in descriptor.fields}
FINDINGS = {"malformed", "incomplete", "undeclared", "wire_type", "unknown_type", "unknown_field",
            "cut"}
TELEPHONY, MODEM, CLIENT = 47601, 47602, 47600
TRUTH = {"True": "1", "False": "0"}  # releases of tshark differ in how they show it
LOOPBACK = b"\x7f\0\0\1"
UDP_HEADERS = 28  # with IP's

Values = dict[str, list[str]]


def frame(name: str, data: bytes, operation: int = 0) -> bytes:
    return struct.pack(">2sBBI", b"VM", operation, len(name), len(data)) + name.encode() + data


def packet(payload: bytes, source: int = TELEPHONY, target: int = MODEM) -> bytes:
    size = UDP_HEADERS + len(payload)
    return struct.pack(">BBHHHBBH4s4sHHHH", 0x45, 0, size, 0, 0, 64, 17, 0, LOOPBACK, LOOPBACK,
                       source, target, size - 20, 0) + payload


def capture(*packets: "Packet") -> bytes:
    """A pcap file; times are in microseconds."""
    out = [struct.pack("<IHHiIII", 0xA1B2C3D4, 2, 4, 0, 0, 65535, 101)]
    for one in packets:
        held = one.data[:one.kept]
        out.append(struct.pack("<IIII", one.time // 10**6, one.time % 10**6, len(held), len(one.data))
                   + held)
    return b"".join(out)


def run_wireshark(files: dict[str, bytes], *command: str, told: str = "") -> tuple[str, str]:
    """Runs a program of Wireshark's in a folder with the files, the script and the colors."""
    # Since release 4.4 it runs no script for root.
    nobody = {"user": 65534, "group": 65534, "extra_groups": []} if os.geteuid() == 0 else {}
    with tempfile.TemporaryDirectory() as scratch:
        os.chmod(scratch, 0o755)
        for name, data in files.items():
            path = pathlib.Path(scratch, name)
            path.parent.mkdir(parents=True, exist_ok=True)
            path.write_bytes(data)
        for name in ("virtual_modem.lua", "colorfilters"):
            shutil.copy(pathlib.Path(LUA_SCRIPT).with_name(name), scratch)
        # A folder for settings of its own: not those of whoever runs this.
        result = subprocess.run(
            command, cwd=scratch, input=told.encode(), check=False, **nobody,
            env={**os.environ, "WIRESHARK_CONFIG_DIR": scratch, "HOME": scratch},
            stdout=subprocess.PIPE, stderr=subprocess.PIPE)
    if result.returncode:
        raise AssertionError(f"{command}: status {result.returncode}: {result.stderr.decode()}")
    # tshark cuts long labels at a byte, which may be in the middle of a character.
    return result.stdout.decode(errors="replace"), result.stderr.decode()


def run_tshark(file: bytes, *options: str) -> str:
    # The plugin folder and the command line may both name the script.
    output, errors = run_wireshark({"capture.pcap": file}, "tshark", "-n", "-r", "capture.pcap",
                                   *["-X", "lua_script:virtual_modem.lua"] * 2, *options)
    if errors:
        raise AssertionError(f"tshark: {errors[:2000]}")
    return output


def dissect(file: bytes) -> list[Values]:
    """What each packet's fields show. No dissector may have failed."""
    packets = []
    for element in xml.etree.ElementTree.fromstring(run_tshark(file, "-T", "pdml", "-2", "--color")):
        values: Values = {}
        for field in element.iter():
            show = field.get("show", "")
            values.setdefault(field.get("name", ""), []).append(TRUTH.get(show, show))
        # The one finding makes the other of itself; any more are exceptions in a dissector.
        if "_ws.lua.error" in values or len(values.get("_ws.malformed", [])) != len(
                values.get("virtual_modem.malformed", [])):
            raise AssertionError(f"a dissector failed: {values}")
        packets.append(values)
    return packets


@dataclasses.dataclass
class Packet:
    data: bytes
    kept: int = 2**16  # bytes that the capture holds of it
    time: int = 0


def batched(test):
    """Of a test that yields packets and is sent what they show.

    Starting tshark takes longer than reading them: all are in one capture, in the order of the tests.
    """
    BATCH.append(test.__name__)

    def finish(self):
        generator, rows = self.batch[test.__name__]
        with contextlib.suppress(StopIteration):
            generator.send(rows)
    finish.begin = test
    return finish


BATCH: list[str] = []


def findings(values: Values) -> set[str]:
    return {name for name in FINDINGS if f"virtual_modem.{name}" in values}


def message(name: str, data: str, *operation: int) -> Packet:
    return Packet(packet(frame(name, bytes.fromhex(data), *operation)))


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


@dataclasses.dataclass
class Case:
    """A frame, and how much of it was captured."""
    data: bytes
    kept: int

    def head(self) -> tuple[str, bytes]:
        name_size, size = struct.unpack_from(">BI", self.data, 3)
        end = 8 + name_size
        sound = name_size and end + size == len(self.data)
        return self.data[8:end].decode(errors="replace") if sound else "", self.data[end:]

    def expected(self, answers: dict[tuple[str, bytes], peer.Answer]) -> list[set[str]]:
        """The findings that are right, of those that tell refusal from loss; any of the list."""
        if self.kept < 2 or self.data[:2] != b"VM":
            return [set()]
        if len(self.data) < 8:
            return [{"malformed"}]
        if self.kept < 8:
            return [{"cut"}]
        name, payload = self.head()
        if not name:
            lost = 0 < self.data[3] and self.kept < min(8 + self.data[3], len(self.data))
            return [{"malformed", "cut"} if lost else {"malformed"}]
        if self.kept < 8 + self.data[3]:
            return [{"cut"}]
        if name not in TYPE_NAMES:
            return [{"unknown_type"}]
        answer = answers[name, payload]
        if self.kept < len(self.data):
            return [{"cut"}] if answer.accepted else [{"cut"}, {"malformed"}]
        if not answer.accepted:
            return [{"malformed"}]
        return [set() if answer.initialized else {"incomplete"}]


def cases_at_the_limits() -> list[Case]:
    """Of nesting, and of the bytes of a tag, a length and a number."""
    def groups(depth: int) -> bytes:
        return b"\x7b" * depth + b"\x7c" * depth

    fields = [groups(100), groups(101), b"\x7b\x7b\x7c\x7c" * 101]
    fields += [b"\x1a" + random_exchange.varint(len(inner)) + inner for inner in
               (groups(99), groups(100))]
    fields += [b"\x1a\0" * 101]
    fields += [bytes.fromhex(field) for field in [
        "f8 80 80 80 00 00", "f8 80 80 80 80 00 00",
        "7a 81 80 80 80 00 31", "7a 81 80 80 80 80 00 31", "7a ff ff ff ff 07", "7a 80 80 80 80 10",
        "78 ff ff ff ff ff ff ff ff ff 7f", "78 80 80 80 80 80 80 80 80 80 80 00"]]
    data = bytes.fromhex("08 00 10 00")
    frames = [frame("RadioCallRing", data + field) for field in fields] + [frame("", b"")]
    return [Case(data, 2**16) for data in frames]


def random_cases(rng: random.Random, count: int) -> list[Case]:
    generator = random_exchange.Generator(rng)
    cases = []
    for i in range(count):
        descriptor = TYPES[i % len(TYPES)]
        data = bytearray(frame(descriptor.full_name, generator.message(descriptor), i % 12))
        kept = 2**16
        if generator.chance(0.3):
            kept = rng.randrange(len(data) + 1)
        if generator.chance(0.4):
            for _ in range(rng.randrange(1, 4)):
                data[rng.randrange(len(data))] = rng.randrange(256)
        if generator.chance(0.1):
            data = data[:rng.randrange(len(data))]
        if generator.chance(0.1):
            data += rng.randbytes(3)
        cases.append(Case(bytes(data), kept))
    return cases


class Dissector(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        begun = {name: getattr(cls, name).begin(cls(name)) for name in BATCH}
        packets = {name: next(generator) for name, generator in begun.items()}
        rows = iter(dissect(capture(*(one for group in packets.values() for one in group))))
        cls.batch = {name: (begun[name], [next(rows) for _ in packets[name]]) for name in BATCH}

    @batched
    def test_responses_find_their_requests(self):  # first: it names packets by their numbers
        def ask(serial):  # not by the ports of all others
            return packet(frame("Dial", bytes.fromhex(f"08 01 10 {serial:02x} 1a 01 31 20 00")), CLIENT)

        def answer(serial, source=MODEM, target=CLIENT):
            data = bytes.fromhex(f"08 01 10 {serial:02x} 18 00")
            return packet(frame("NoResultResponse", data), source, target)
        quoted = ask(7)  # in an error that it caused
        icmp = struct.pack(">BBHHHBBH4s4sBBHI", 0x45, 0, 28 + len(quoted), 0, 0, 64, 1, 0, LOOPBACK,
                           LOOPBACK, 3, 3, 0, 0) + quoted
        packets = [ask(7), ask(8), answer(8), answer(7), ask(7), icmp, answer(7), answer(7),
                   answer(8, CLIENT, MODEM), answer(10), ask(10)]
        times = [0, 1000, 3000, 1004500, *range(2000000, 2000007)]
        rows = yield [Packet(data, time=time) for data, time in zip(packets, times)]
        self.assertEqual(
            [tuple("".join(values.get(f"virtual_modem.{name}", []))
                   for name in ("request_in", "response_in", "response_time")) for values in rows],
            [("", "4", ""), ("", "3", ""), ("2", "", "0.002000000"), ("1", "", "1.004500000"),
             ("", "7", ""), ("", "", ""), ("5", "", "0.000002000"), ("5", "", "0.000003000"),
             ("", "", ""), ("", "", ""), ("", "", "")])

    @batched
    def test_every_message_of_the_example(self):
        with tempfile.TemporaryDirectory() as scratch:
            path = pathlib.Path(scratch) / "demo.pcap"
            timeline = subprocess.run([CALL_EXCHANGE, "--pcap", path, "all"],
                                      stdout=subprocess.PIPE, check=True, text=True).stdout
            data, at, packets = path.read_bytes(), 24, []
        while at < len(data):
            size, = struct.unpack_from("<I", data, at + 8)
            packets.append(Packet(data[at + 16:at + 16 + size]))
            at += 16 + size
        rows = yield packets
        shown = [line.split() for line in timeline.splitlines() if " -> " in line or " <- " in line]
        self.assertEqual(
            [(words[2], MODEM if words[1] == "->" else TELEPHONY) for words in shown],
            [(values["virtual_modem.type"][0].rpartition(".")[2], int(values["udp.dstport"][0]))
             for values in rows])
        page = (TESTS.parent / "docs/wireshark.md").read_text(encoding="utf-8")
        for number, values in enumerate(rows, 1):
            if findings(values) & {"incomplete", "malformed"}:
                said = ",".join(values["_ws.expert.message"])
                self.assertIn(f'\n{number}\t{values["virtual_modem.type"][0]}\t{said}\n', page)
        # Though the capture is masked.
        self.assertEqual(set().union(*map(findings, rows)),
                         {"incomplete", "undeclared", "unknown_field"})

    @batched
    def test_every_value_of_every_type(self):
        golden = [sample for path in sorted((TESTS / "golden").glob("*.txt"))
                  for sample in samples.read(path)]
        rows = yield [Packet(packet(frame(s.message, s.data))) for s in golden]
        kinds = {kind.full_name: MessageFactory().GetPrototype(kind) for kind in TYPES}
        for sample, values in zip(golden, rows):
            expected: Values = {}
            collect(kinds[sample.message].FromString(sample.data), expected)
            self.assertEqual(expected, {name: shown for name, shown in values.items()
                                        if name in FIELD_NAMES}, sample.message)
            self.assertEqual(findings(values), set(), sample.message)

    @batched
    def test_it_agrees_with_the_library_on_damaged_captures(self):
        cases = cases_at_the_limits() + random_cases(random.Random(SEED), 1500)
        rows = yield [Packet(packet(case.data), UDP_HEADERS + case.kept) for case in cases]
        questions = list({case.head(): None for case in cases
                          if len(case.data) >= 8 and case.head()[0] in TYPE_NAMES})
        answers = dict(zip(questions, peer.ask(PEER, questions)))
        seen = set()
        for case, values in zip(cases, rows):
            found = findings(values) & {"malformed", "incomplete", "unknown_type", "cut"}
            seen |= found
            self.assertIn(found, case.expected(answers),
                          f"seed {SEED}, {case.data.hex(' ')}, kept {case.kept}")
        self.assertEqual(len(seen), 4)

    @batched
    def test_hostile_messages_of_the_largest_size(self):
        name = "RepeatUintResultIndication"
        largest = 65535 - UDP_HEADERS - len(frame(name, b""))
        groups, unknown, numbers, packed = yield [Packet(packet(frame(name, data))) for data in [
            b"\x7b" * largest,
            b"\x78\0" * (largest // 2),
            b"\x10\0" * (largest // 2),
            b"\x12" + random_exchange.varint(largest - 4) + b"\x08" * (largest - 4),
        ]]
        self.assertIn("more than 100 levels of nesting", groups["_ws.expert.message"][0])
        self.assertLess(len(unknown["_ws.expert.message"]), 100)
        self.assertEqual(len(numbers[f"virtual_modem.{name}.result"]), largest // 2)
        self.assertEqual(len(packed[f"virtual_modem.{name}.result"]), largest - 4)

    @batched
    def test_what_it_says(self):
        call = "08 05 10 01 18 91 01 20 00 28 01 30 00 38 01 40 00 4a 00 50 00 5a 00"
        calls = message("GetCurrentCallsResponse",
                        f"08 01 10 03 18 1e 22 17 {call} 7a 01 ff 25 01 02 03 04 20 05")
        dials = {
            "08 01 1a 05 31": "4: 5 bytes announced, 1 left in the message",
            "1a 80 80 80 80 10": "6: over 4 billion bytes announced, 0 left in the message",
            "08 01 00": "2: a field has number 0",
            "7b 74": "1: another group ends than was begun",
            "08 01 7c": "2: a group ends that was not begun",
            "0e": "0: there is no wire type 6",
            "10 ff ff ff ff ff ff ff ff ff ff 01": "1: a number is longer than 10 bytes",
            "08 01 1d 01": "3: the message ends too early, bytes missing: 3",
        }
        said = {message("Dial", data).data: f"Malformed at byte {why}" for data, why in dials.items()}
        said |= {
            packet(b"VM\0\4\0\0"): "The frame ends inside its header",
            packet(frame("", b"")): "The frame names no type",
            packet(frame("Dial", b"") + b"x"): "The frame should have 12 bytes and has 13",
            packet(frame("Dials", b"")): "The schema has no type Dials",
        }
        dial = packet(frame("Dial", bytes.fromhex("08 01 10 01 1a 01 31 20 00")))
        first, *rows, other = yield [
            calls, *map(Packet, said), Packet(dial, UDP_HEADERS + 7), Packet(dial, UDP_HEADERS + 12 + 3),
            Packet(packet(b"else"))]
        self.assertEqual(first["_ws.expert.message"], [
            "30 is not declared in Radio_Errno: a receiver takes the field for absent",
            "required Call.namepresentation is missing",
            "GetCurrentCallsResponse has no field 15",
            "calls came as 32-bit: a receiver takes it for unknown",
            "calls came as varint: a receiver takes it for unknown",
            "required GetCurrentCallsResponse.error is missing"])
        self.assertEqual(first["virtual_modem.error"], ["30"])
        self.assertEqual([values["_ws.expert.message"] for values in rows], [
            *([words] for words in said.values()), ["The capture ends inside the frame's header"],
            ["The capture holds 3 of the message's 9 bytes"]])
        self.assertEqual(other["data.len"], ["4"])  # left to others

    @batched
    def test_numbers_and_lists_as_a_receiver_reads_them(self):
        numbers = {"80 80 80 80 10": "1", "80 80 80 80 80 81 00": "1",
                   "80 80 80 80 80 80 80 80 80 01": "1", "80 80 80 80 80 80 80 80 80 02": "0"}
        last, several, merged, *parms = yield [
            message("NoResultResponse", "08 00 10 05 10 ff ff ff ff ff ff ff ff ff 01 18 81 80 00"),
            message("RepeatUintResultIndication", "08 00 10 07 12 06 01 ff ff ff ff 0f"),
            message("RadioCallRing", "08 00 10 00 1a 06 08 00 10 00 18 00 1a 02 20 00"),
            *(message("BoolParmRequest", f"08 00 10 00 18 {number}") for number in numbers)]
        self.assertEqual((last["virtual_modem.serial"], last["virtual_modem.error"]), (["-1"], ["1"]))
        self.assertEqual(several["virtual_modem.RepeatUintResultIndication.result"],
                         ["7", "1", "4294967295"])
        self.assertEqual(findings(merged), set())  # each brings what the other lacks
        self.assertEqual([values["virtual_modem.BoolParmRequest.parm"] for values in parms],
                         [[shown] for shown in numbers.values()])

    @batched
    def test_colors(self):
        messages = ["08 01 10 01 18 00", "08 01 10 01 18 01", "08 01 10 01", "08 01 10 01 18",
                    "08 01 10 01 18 00 70 00"]
        rows = yield [message("NoResultResponse", data) for data in messages]
        refused = "Virtual modem: a receiver refuses it"
        self.assertEqual([values.get("frame.coloring_rule.name", [""])[0] for values in rows],
                         ["", "Virtual modem: the modem reports an error", refused, refused,
                          "Virtual modem: unknown to this schema"])

    def test_the_summary_and_the_tree(self):
        """Text, too, which no terminal takes for a command."""
        not_utf8 = b"\xff\xc0\x80\xed\xa0\x80\xe0\x80\x80\xf0\x80\x80\x80\xf4\x90\x80\x80"
        number = b"\x1b[31m\0" + "\u202ey\u009bz\u2066\uffff\u7535".encode() + not_utf8
        shown = r"\x1b[31m\x00\xe2\x80\xaey\xc2\x9bz\xe2\x81\xa6\xef\xbf\xbf" "\u7535"
        shown += "".join(f"\\x{byte:02x}" for byte in not_utf8)
        data = bytes.fromhex
        packets = [
            packet(frame("Dial", data("08 01 10 07 1a 01 31 20 63"), 8)),
            packet(frame("NoResultResponse", data("08 01 10 07 18 00 70 00")), MODEM, TELEPHONY),
            packet(frame("RepeatUintResultIndication", data("08 01 10 ff ff ff ff 0f")), MODEM,
                   TELEPHONY),
            packet(frame("BoolParmRequest", data("08 01 10 80 80 80 80 f8 ff ff ff ff 01 18 01"), 4)),
            packet(frame("NoParmRequest", b"", 77)),
            packet(frame("EmergencyNumber", b"\x0a" + bytes([len(number)]) + number))]
        output = run_tshark(capture(*(Packet(one, time=2000 * i) for i, one in enumerate(packets))),
                            "-2", "-P", "-V", "-O", "virtual_modem")
        self.assertEqual([re.sub(".* VirtualModem [0-9]+ ", "", line).rstrip()
                          for line in output.split("\n") if " VirtualModem " in line][-4:], [
            "RepeatUintResultIndication to telephony platformtype=QCOM result=4294967295",
            "BoolParmRequest to modem (call state changed) platformtype=QCOM serial=-2147483648 "
            "parm=true",
            "NoParmRequest to modem (operation 77)", f"EmergencyNumber to modem number={shown}"])
        lines = [line.strip() for line in output.split("\n")
                 if re.match("Virtual modem| +[^ [[0-9]| +\\[(Expert|Re|Serial|Error)", line)]
        self.assertEqual(lines[:lines.index("Virtual modem, RepeatUintResultIndication")], [
            "Virtual modem, Dial, serial 7", "Operation: IMS call (8)", "Length of type name: 4",
            "Length of message: 9", "Type: Dial", "Dial", "platformtype: QCOM (1)", "serial: 7",
            "address: 1", "clir: Unknown (99)", "[Expert Info (Warning/Protocol): 99 is not declared in "
            "Clir: a receiver takes the field for absent]",
            "[Expert Info (Warning/Protocol): required Dial.clir is missing]", "[Serial: 7]",
            "[Response in: 2]",
            "Virtual modem, NoResultResponse, serial 7", "Operation: by type (0)",
            "Length of type name: 16", "Length of message: 8", "Type: NoResultResponse",
            "NoResultResponse", "platformtype: QCOM (1)", "serial: 7", "error: RADIO_E_SUCCESS (0)",
            "Unknown field 14, varint, 2 bytes",
            "[Expert Info (Note/Undecoded): NoResultResponse has no field 14]", "[Serial: 7]",
            "[Request in: 1]", "[Response time: 0.002000000 seconds]", "[Error: RADIO_E_SUCCESS (0)]"])
    def test_another_capture_begins_anew(self):
        ask = packet(frame("Dial", bytes.fromhex("08 01 10 07 1a 01 31 20 00")))
        answer = packet(frame("NoResultResponse", bytes.fromhex("08 01 10 07 18 00")),
                        MODEM, TELEPHONY)
        files = {"first": capture(Packet(ask), Packet(answer)), "second": capture(*[Packet(answer)] * 2)}
        # Release 4.0 of sharkd takes a filter's result for that of the same filter in another file.
        filters = ["virtual_modem.request_in", "virtual_modem.request_in > 0"]
        requests = [request for name, wanted in zip(list(files), filters) for request in [
            ("load", {"file": f"HERE/{name}"}), ("frames", {"filter": wanted})]]
        told = "\n".join(
            json.dumps({"jsonrpc": "2.0", "id": i, "method": method, "params": parameters})
            for i, (method, parameters) in enumerate(requests, 1)) + "\n"
        script = pathlib.Path(LUA_SCRIPT)
        files[f".local/lib/wireshark/plugins/{script.name}"] = script.read_bytes()
        output, _ = run_wireshark(files, "sh", "-c", 'sed "s,HERE,$PWD," | sharkd -', told=told)
        answers = [json.loads(line)["result"] for line in output.splitlines() if line[:1] == "{"]
        self.assertEqual([len(answers[1]), answers[3]], [1, []])

    def test_the_script_as_it_is_written_names_the_one_to_load(self):
        source = (TESTS.parent / "tools/wireshark/virtual_modem.lua").read_bytes()
        _, errors = run_wireshark({"source.lua": source, "capture.pcap": capture()}, "tshark", "-n",
                                  "-r", "capture.pcap", "-X", "lua_script:source.lua")
        self.assertIn("this script has no schema; load share/virtual-modem-protos/wireshark/"
                      "virtual_modem.lua of a build or an installation\n", errors)


if __name__ == "__main__":
    if shutil.which("tshark") is None:
        print("skipped: no tshark; 'scripts/setup capture' brings it")
        sys.exit(77)
    unittest.main(argv=sys.argv[:1] + sys.argv[5:])
