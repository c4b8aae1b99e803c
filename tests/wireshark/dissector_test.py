#!/usr/bin/python3
"""Has tshark read captures; holds what it shows against what was written and the library says.

Usage: dissector_test.py LUA_SCRIPT CALL_EXCHANGE PEER DESCRIPTOR_SET [TEST...]

CALL_EXCHANGE is the example, PEER the program made from ../interop/peer.cc. Exits 77, skipped,
without tshark. The environment's SEED repeats a run.
"""
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
TELEPHONY, MODEM = 47601, 47602
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


def capture(*packets: bytes, kept: list[int] | None = None,
            times: list[int] | None = None) -> bytes:
    """A pcap file; kept is how many bytes it holds of each packet, times are in microseconds."""
    out = [struct.pack("<IHHiIII", 0xA1B2C3D4, 2, 4, 0, 0, 65535, 101)]
    for i, data in enumerate(packets):
        held = data[:kept[i]] if kept else data
        at = times[i] if times else i
        out.append(struct.pack("<IIII", at // 10**6, at % 10**6, len(held), len(data)) + held)
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
    output, errors = run_wireshark({"capture.pcap": file}, "tshark", "-n", "-r", "capture.pcap",
                                   "-X", "lua_script:virtual_modem.lua", *options)
    if errors:
        raise AssertionError(f"tshark: {errors[:2000]}")
    return output


def dissect(file: bytes, *options: str) -> list[Values]:
    """What each packet's fields show. No dissector may have failed."""
    packets = []
    for element in xml.etree.ElementTree.fromstring(run_tshark(file, "-T", "pdml", *options)):
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


def findings(values: Values) -> set[str]:
    return {name for name in FINDINGS if f"virtual_modem.{name}" in values}


def dissect_one(name: str, data: str) -> Values:
    return dissect(capture(packet(frame(name, bytes.fromhex(data)))))[0]


def collect(message, values: Values) -> None:
    """Adds the values of a parsed message as tshark shows them."""
    for field, value in message.ListFields():
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
    def test_every_message_of_the_example(self):
        with tempfile.TemporaryDirectory() as scratch:
            path = pathlib.Path(scratch) / "demo.pcap"
            timeline = subprocess.run([CALL_EXCHANGE, "--pcap", path, "all"],
                                      stdout=subprocess.PIPE, check=True, text=True).stdout
            packets = dissect(path.read_bytes())
        shown = [line.split() for line in timeline.splitlines() if " -> " in line or " <- " in line]
        self.assertEqual(
            [(words[2], MODEM if words[1] == "->" else TELEPHONY) for words in shown],
            [(values["virtual_modem.type"][0].rpartition(".")[2], int(values["udp.dstport"][0]))
             for values in packets])
        for values in packets:
            self.assertLessEqual(findings(values), {"incomplete", "undeclared", "unknown_field"})

    def test_every_value_of_every_type(self):
        golden = [sample for path in sorted((TESTS / "golden").glob("*.txt"))
                  for sample in samples.read(path)]
        packets = dissect(capture(*(packet(frame(s.message, s.data)) for s in golden)))
        kinds = {kind.full_name: MessageFactory().GetPrototype(kind) for kind in TYPES}
        for sample, values in zip(golden, packets):
            with self.subTest(sample.message, kind=sample.kind):
                expected: Values = {}
                collect(kinds[sample.message].FromString(sample.data), expected)
                self.assertEqual(expected, {name: shown for name, shown in values.items()
                                            if name in FIELD_NAMES})
                self.assertEqual(findings(values), set())

    def test_it_agrees_with_the_library_on_damaged_captures(self):
        cases = cases_at_the_limits() + random_cases(random.Random(SEED), 4000)
        questions = list({case.head(): None for case in cases
                          if len(case.data) >= 8 and case.head()[0] in TYPE_NAMES})
        answers = dict(zip(questions, peer.ask(PEER, questions)))
        packets = dissect(capture(*(packet(case.data) for case in cases),
                                  kept=[UDP_HEADERS + case.kept for case in cases]))
        seen = set()
        for case, values in zip(cases, packets):
            found = findings(values) & {"malformed", "incomplete", "unknown_type", "cut"}
            seen |= found
            with self.subTest(f"seed {SEED}", data=case.data.hex(" "), kept=case.kept):
                self.assertIn(found, case.expected(answers))
        self.assertEqual(len(seen), 4)

    def test_hostile_messages_of_the_largest_size(self):
        name = "RepeatUintResultIndication"
        largest = 65535 - UDP_HEADERS - len(frame(name, b""))
        groups, unknown, numbers, packed = dissect(capture(*(packet(frame(name, data)) for data in [
            b"\x7b" * largest,
            b"\x78\0" * (largest // 2),
            b"\x10\0" * (largest // 2),
            b"\x12" + random_exchange.varint(largest - 4) + b"\x08" * (largest - 4),
        ])))
        self.assertIn("more than 100 levels of nesting", groups["_ws.expert.message"][0])
        self.assertLess(len(unknown["_ws.expert.message"]), 100)
        self.assertEqual(len(numbers[f"virtual_modem.{name}.result"]), largest // 2)
        self.assertEqual(len(packed[f"virtual_modem.{name}.result"]), largest - 4)

    def test_what_it_says(self):
        call = "08 05 10 01 18 91 01 20 00 28 01 30 00 38 01 40 00 4a 00 50 00 5a 00"
        values = dissect_one("GetCurrentCallsResponse",
                             f"08 01 10 03 18 1e 22 17 {call} 7a 01 ff 25 01 02 03 04 20 05")
        self.assertEqual(values["_ws.expert.message"], [
            "30 is not declared in Radio_Errno: a receiver takes the field for absent",
            "required Call.namepresentation is missing",
            "GetCurrentCallsResponse has no field 15",
            "calls came as 32-bit: a receiver takes it for unknown",
            "calls came as varint: a receiver takes it for unknown",
            "required GetCurrentCallsResponse.error is missing"])
        self.assertEqual(values["virtual_modem.error"], ["30"])
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
        frames = {frame("Dial", bytes.fromhex(data)): f"Malformed at byte {said}"
                  for data, said in dials.items()}
        frames |= {
            b"VM\0\4\0\0": "The frame ends inside its header",
            frame("", b""): "The frame names no type",
            frame("Dial", b"") + b"x": "The frame should have 12 bytes and has 13",
            frame("Dials", b""): "The schema has no type Dials",
        }
        packets = dissect(capture(*map(packet, frames)))
        for values, said in zip(packets, frames.values()):
            self.assertEqual(values["_ws.expert.message"], [said])
        dial = packet(frame("Dial", bytes.fromhex("08 01 10 01 1a 01 31 20 00")))
        kept = [UDP_HEADERS + 7, UDP_HEADERS + 12 + 3]
        self.assertEqual(
            [values["_ws.expert.message"] for values in dissect(capture(dial, dial, kept=kept))],
            [["The capture ends inside the frame's header"],
             ["The capture holds 3 of the message's 9 bytes"]])

    def test_numbers_and_lists_as_a_receiver_reads_them(self):
        values = dissect_one("NoResultResponse",
                             "08 00 10 05 10 ff ff ff ff ff ff ff ff ff 01 18 81 80 00")
        self.assertEqual((values["virtual_modem.serial"], values["virtual_modem.error"]),
                         (["-1"], ["1"]))  # the last one counts
        values = dissect_one("RepeatUintResultIndication", "08 00 10 07 12 06 01 ff ff ff ff 0f")
        self.assertEqual(values["virtual_modem.RepeatUintResultIndication.result"],
                         ["7", "1", "4294967295"])
        for number, shown in [("80 80 80 80 10", "1"), ("80 80 80 80 80 81 00", "1"),
                              ("80 80 80 80 80 80 80 80 80 01", "1"),
                              ("80 80 80 80 80 80 80 80 80 02", "0")]:
            values = dissect_one("BoolParmRequest", f"08 00 10 00 18 {number}")
            self.assertEqual(values["virtual_modem.BoolParmRequest.parm"], [shown])
        # A record that comes twice merges: each brings what the other lacks.
        self.assertEqual(findings(dissect_one(
            "RadioCallRing", "08 00 10 00 1a 06 08 00 10 00 18 00 1a 02 20 00")), set())

    def test_the_summary(self):
        lines = run_tshark(capture(
            packet(frame("RepeatUintResultIndication", bytes.fromhex("08 01 10 ff ff ff ff 0f")),
                   MODEM, TELEPHONY),
            packet(frame("BoolParmRequest",
                         bytes.fromhex("08 01 10 80 80 80 80 f8 ff ff ff ff 01 18 01"), 4)),
            packet(frame("NoParmRequest", b"", 77)))).splitlines()
        self.assertEqual([re.sub(".* VirtualModem [0-9]+ ", "", line).rstrip() for line in lines], [
            "RepeatUintResultIndication to telephony platformtype=QCOM result=4294967295",
            "BoolParmRequest to modem (call state changed) platformtype=QCOM serial=-2147483648 "
            "parm=true",
            "NoParmRequest to modem (operation 77)"])

    def test_the_tree(self):
        file = capture(
            packet(frame("Dial", bytes.fromhex("08 01 10 07 1a 01 31 20 63"), 8)),
            packet(frame("NoResultResponse", bytes.fromhex("08 01 10 07 18 00 70 00")), MODEM,
                   TELEPHONY),
            packet(frame("Dials", b"")), packet(frame("Dial", b"\x08")), times=[0, 2000, 3000, 4000])
        lines = [line.strip() for line in run_tshark(file, "-2", "-V", "-O", "virtual_modem").split("\n")
                 if re.match("Virtual modem| +[^ [[]| +\\[(Expert|Re|Serial|Error)", line)]
        self.assertEqual(lines, [
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
            "[Request in: 1]", "[Response time: 0.002000000 seconds]", "[Error: RADIO_E_SUCCESS (0)]",
            "Virtual modem, Dials", "Operation: by type (0)", "Length of type name: 5",
            "Length of message: 0", "Type: Dials",
            "[Expert Info (Warning/Undecoded): The schema has no type Dials]",
            "Virtual modem, Dial", "Operation: by type (0)", "Length of type name: 4",
            "Length of message: 1", "Type: Dial", "Dial", "[Expert Info (Error/Malformed): Malformed at "
            "byte 1: the message ends too early, bytes missing: 1]"])

    def test_what_is_no_frame_is_left_to_others(self):
        self.assertEqual(dissect(capture(packet(b"else")))[0]["data.len"], ["4"])

    def test_text_is_no_terminal_command(self):
        not_utf8 = b"\xff\xc0\x80\xed\xa0\x80\xe0\x80\x80\xf0\x80\x80\x80\xf4\x90\x80\x80"
        number = b"\x1b[31m\0" + "\u202ey\u009bz\u2066\uffff\u7535".encode() + not_utf8
        file = capture(packet(frame("EmergencyNumber", b"\x0a" + bytes([len(number)]) + number)))
        shown = r"\x1b[31m\x00\xe2\x80\xaey\xc2\x9bz\xe2\x81\xa6\xef\xbf\xbf" "\u7535"
        shown += "".join(f"\\x{byte:02x}" for byte in not_utf8)
        self.assertEqual(dissect(file)[0]["virtual_modem.EmergencyNumber.number"], [shown])
        self.assertIn(f"number={shown}", run_tshark(file))

    def test_responses_find_their_requests(self):
        dial = "08 01 10 %02x 1a 01 31 20 00"
        done = "08 01 10 %02x 18 00"

        def ask(serial):
            return packet(frame("Dial", bytes.fromhex(dial % serial)))

        def answer(serial, source=MODEM, target=TELEPHONY):
            return packet(frame("NoResultResponse", bytes.fromhex(done % serial)), source, target)
        quoted = ask(7)  # in an error that it caused
        icmp = struct.pack(">BBHHHBBH4s4sBBHI", 0x45, 0, 28 + len(quoted), 0, 0, 64, 1, 0, LOOPBACK,
                           LOOPBACK, 3, 3, 0, 0) + quoted
        packets = [ask(7), ask(8), answer(8), answer(7), ask(7), icmp, answer(7), answer(7),
                   answer(8, TELEPHONY, MODEM), answer(10), ask(10)]
        times = [0, 1000, 3000, 1004500, *range(2000000, 2000007)]
        rows = dissect(capture(*packets, times=times), "-2")
        self.assertEqual(
            [tuple("".join(values.get(f"virtual_modem.{name}", []))
                   for name in ("request_in", "response_in", "response_time")) for values in rows],
            [("", "4", ""), ("", "3", ""), ("2", "", "0.002000000"), ("1", "", "1.004500000"),
             ("", "7", ""), ("", "", ""), ("5", "", "0.000002000"), ("5", "", "0.000003000"),
             ("", "", ""), ("", "", ""), ("", "", "")])

    def test_another_capture_begins_anew(self):
        ask = packet(frame("Dial", bytes.fromhex("08 01 10 07 1a 01 31 20 00")))
        answer = packet(frame("NoResultResponse", bytes.fromhex("08 01 10 07 18 00")),
                        MODEM, TELEPHONY)
        files = {"first": capture(ask, answer), "second": capture(answer, answer)}
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

    def test_it_may_be_loaded_twice(self):
        run_tshark(capture(), "-X", "lua_script:virtual_modem.lua")

    def test_colors(self):
        messages = ["08 01 10 01 18 00", "08 01 10 01 18 01", "08 01 10 01", "08 01 10 01 18",
                    "08 01 10 01 18 00 70 00"]
        file = capture(*(packet(frame("NoResultResponse", bytes.fromhex(data)))
                         for data in messages))
        colors = [values.get("frame.coloring_rule.name", [""])[0]
                  for values in dissect(file, "--color")]
        refused = "Virtual modem: a receiver refuses it"
        self.assertEqual(colors, ["", "Virtual modem: the modem reports an error", refused, refused,
                                  "Virtual modem: unknown to this schema"])


if __name__ == "__main__":
    if shutil.which("tshark") is None:
        print("skipped: no tshark; 'scripts/setup capture' brings it")
        sys.exit(77)
    unittest.main(argv=sys.argv[:1] + sys.argv[5:])
