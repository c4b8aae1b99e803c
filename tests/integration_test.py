#!/usr/bin/python3
"""The client of docs/integration.md against its modem, and the page against the client.

Usage: integration_test.py DESCRIPTOR_SET CLIENT [INSPECTOR]
"""
import pathlib
import re
import struct
import subprocess
import sys
import tempfile
import unittest

ROOT = pathlib.Path(__file__).resolve().parent.parent
sys.path.insert(0, str(ROOT / "examples"))
import integration_modem as modem  # pylint: disable=wrong-import-position

DESCRIPTOR_SET, CLIENT, *INSPECTOR = sys.argv[1:]
NUMBER = "+861012345678"


def run(*arguments, script=modem.play):
    return modem.run(DESCRIPTOR_SET, [CLIENT, *arguments], script,
                     stdout=subprocess.PIPE, stderr=subprocess.PIPE)


class Call(unittest.TestCase):
    """The modem's whole play; it takes as long as the client waits for a response."""

    @classmethod
    def setUpClass(cls):
        with tempfile.TemporaryDirectory() as scratch:
            path = pathlib.Path(scratch, "call.pcap")
            cls.done = run(NUMBER, path)
            cls.capture = path.read_bytes()

    def test_page_shows_the_client_and_its_output(self):
        self.assertEqual((self.done.returncode, self.done.stderr), (0, ""))
        self.assertIn("     lacks causecode\n     lacks vendorcause\n     not usable as the response\n",
                      self.done.stdout)
        self.assertEqual(re.findall("^==.*", self.done.stdout, re.MULTILINE), [
            "== call 1: RADIO_CALL_DIALING", "== calls go over RADIO_T_LTE",
            "== call 1: RADIO_CALL_ACTIVE", "== ended, the cause is not known"])
        page = (ROOT / "docs/integration.md").read_text(encoding="utf-8")
        code = "".join((ROOT / file).read_text(encoding="utf-8") for file in (
            "examples/client/endpoint.h", "examples/client/endpoint.cc", "examples/client/client.cc",
            "examples/integration_client.cc", "tests/exchange/exchange_test.cc"))
        for language, source in (("cpp", code), ("text", self.done.stdout)):
            blocks = re.findall(f"```{language}\n(.*?)```", page, re.DOTALL)
            self.assertTrue(blocks)
            for block in blocks:
                self.assertIn(block, source)

    def test_capture_holds_what_the_log_shows(self):
        at, recorded = 24, []
        while at < len(self.capture):
            size = struct.unpack_from("<I", self.capture, at + 8)[0]
            source, target = struct.unpack_from(">HH", self.capture, at + 16 + 20)
            frame = self.capture[at + 16 + 28:at + 16 + size]  # after the IPv4 and UDP headers
            recorded.append((f"{source}->{target}", frame[8:8 + frame[3]].decode(), str(frame[2])))
            at += 16 + size
        arrows = {"->": "47601->47602", "<-": "47602->47601"}
        self.assertEqual(recorded, [
            (arrows[arrow], *rest) for arrow, *rest
            in re.findall(r"^(->|<-) (\w+)/(\d+)", self.done.stdout, re.MULTILINE)])
        for trace in (self.capture, self.done.stdout.encode()):
            self.assertNotIn(NUMBER[1:].encode(), trace)

    @unittest.skipUnless(INSPECTOR, "no inspector in this build")
    def test_page_shows_the_diagram(self):
        types = "--type", "Dial", "--type", "NoResultResponse", "--type", "Hangup"
        with tempfile.NamedTemporaryFile() as capture:
            capture.write(self.capture)
            capture.flush()
            drawn = subprocess.check_output(
                [*INSPECTOR, "log", "--diagram", "--pairs", *types, capture.name], text=True)
        page = (ROOT / "docs/integration.md").read_text(encoding="utf-8")
        without_times = [re.sub(r"after [\d.]+ ms", "after TIME", text) for text in (drawn, page)]
        self.assertIn(f"```mermaid\n{without_times[0]}```\n", without_times[1])
        self.assertRegex(drawn, r"Hangup serial 4\n.*after 2\d{3}\.")


class Client(unittest.TestCase):
    def test_serials_wrap_to_one(self):
        def two_requests(link):
            link.receive("Dial")
            link.send("NoResultIndication", modem.CALL_STATE_CHANGED)
            serial = link.receive("NoParmRequest", modem.CURRENT_CALLS).serial
            link.send("GetCurrentCallsResponse", serial=serial, error=1)
        done = run(NUMBER, "/dev/null", str(2**31 - 1), script=two_requests)
        self.assertEqual(re.findall(r"^-> .*serial: (-?\d+)", done.stdout, re.MULTILINE),
                         [str(2**31 - 1), "1"])

    def test_a_failure_is_not_an_empty_list(self):
        def refuse_list(link):
            link.send("NoResultResponse", serial=link.receive("Dial").serial, error=0)
            link.send("NoResultIndication", modem.CALL_STATE_CHANGED)
            serial = link.receive("NoParmRequest", modem.CURRENT_CALLS).serial
            link.send("GetCurrentCallsResponse", serial=serial, error=1)
        self.assertIn("== the state of the call is not known\n",
                      run(NUMBER, script=refuse_list).stdout)

    def test_how_a_call_ends(self):
        def refused(link):
            link.send("NoResultResponse", serial=link.receive("Dial").serial, error=1)

        def ended(link):
            link.send("NoResultIndication", modem.CALL_STATE_CHANGED)
            link.receive("Dial")
            link.send_calls(link.receive("NoParmRequest", modem.CURRENT_CALLS).serial)
            serial = link.receive("NoParmRequest", modem.LAST_CALL_FAIL_CAUSE).serial
            link.send("LastCallFailureCauseResponse", serial=serial, error=0, causecode=16,
                      vendorcause="")
        for script, end in ((refused, "== refused: RADIO_E_RADIO_NOT_AVAILABLE"),
                            (ended, "== ended: CAUSE_NORMAL")):
            self.assertEqual(run(NUMBER, script=script).stdout.splitlines()[-1], end)

    def test_hangs_up_once(self):
        def active_twice(link):
            link.send("NoResultResponse", serial=link.receive("Dial").serial, error=0)
            for _ in range(2):
                link.send("NoResultIndication", modem.CALL_STATE_CHANGED)
                listing = link.receive("NoParmRequest", modem.CURRENT_CALLS)
                link.send_calls(listing.serial, modem.ACTIVE)
                if listing.serial == 2:
                    link.receive("Hangup")
        self.assertEqual(run(NUMBER, script=active_twice).stdout.count("-> Hangup"), 1)

    def test_a_response_of_another_type_is_not_believed(self):
        def mix_up(link):
            link.send("LastCallFailureCauseResponse", serial=link.receive("Dial").serial, error=0,
                      causecode=16, vendorcause="")
            serial = link.receive("NoParmRequest", modem.CURRENT_CALLS).serial
            link.send("GetCurrentCallsResponse", serial=serial, error=1)
        self.assertIn("     not usable as the response\n", run(NUMBER, script=mix_up).stdout)

    def test_lost_connection_ends_with_an_error(self):
        def nothing(link):
            link.receive("Dial")
        def no_frame(link):
            link.receive("Dial")
            link.link.send(b"no frame")
        for script, why in ((nothing, "the other side closed it"),
                            (no_frame, "a frame does not begin with 'VM'")):
            with self.subTest(script=script):
                done = run(NUMBER, script=script)
                self.assertEqual(done.returncode, 1)
                self.assertEqual(done.stderr, f"integration_client: the connection ends: {why}\n")
                self.assertEqual(done.stdout.split("\n", 1)[1], "     request 1 is lost\n"
                                 "== the state of the call is not known\n")

    def test_bad_input(self):
        usage = "usage: integration_client SOCKET NUMBER [CAPTURE [FIRST_SERIAL]]\n"
        for arguments, status, why in [
                (["socket"], 2, usage),
                (["socket", NUMBER, "/dev/null", "0"], 2, usage),
                (["socket", NUMBER, "/dev/null", "1x"], 2, usage),
                (["socket", NUMBER, "/dev/null", "1", "2"], 2, usage),
                (["/nowhere", NUMBER], 1, ": /nowhere: No such file or directory\n"),
                (["/" * 108, NUMBER], 1, "/: File name too long\n"),
                (["/" * 107, NUMBER], 1, "/: Connection refused\n"),
                (["socket", NUMBER, "/nowhere/file"], 1,
                 ": /nowhere/file: No such file or directory\n"),
        ]:
            with self.subTest(arguments):
                done = subprocess.run([CLIENT, *arguments], capture_output=True, text=True,
                                      check=False)
                self.assertEqual(done.returncode, status)
                self.assertTrue(done.stderr.endswith(why), done.stderr)


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
