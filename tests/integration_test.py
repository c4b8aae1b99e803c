#!/usr/bin/python3
"""The client of docs/integration.md against its modem, and the page against the client.

Usage: integration_test.py CLIENT [INSPECTOR]
"""
import pathlib
import re
import subprocess
import sys
import tempfile
import unittest

ROOT = pathlib.Path(__file__).resolve().parent.parent
sys.path.insert(0, str(ROOT / "examples"))
import integration_modem as modem  # pylint: disable=wrong-import-position

CLIENT, *INSPECTOR = sys.argv[1:]
PAGE = (ROOT / "docs/integration.md").read_text(encoding="utf-8")
NUMBER = "+861012345678"


def run(*arguments, script=modem.play):
    return modem.run([CLIENT, *arguments], script, stdout=subprocess.PIPE, stderr=subprocess.PIPE)


class Client(unittest.TestCase):
    def test_the_whole_play_as_the_page_shows_it(self):
        """Takes as long as the client waits for a response."""
        with tempfile.TemporaryDirectory() as scratch:
            capture = pathlib.Path(scratch, "call.pcap")
            done = run(NUMBER, capture)
            drawn = subprocess.check_output(
                [*INSPECTOR, "log", "--diagram", "--pairs", "--type", "Dial", "--type", "NoResultResponse",
                 "--type", "Hangup", capture], text=True) if INSPECTOR else ""
            for trace in (capture.read_bytes(), done.stdout.encode()):
                self.assertNotIn(NUMBER[1:].encode(), trace)
        self.assertEqual((done.returncode, done.stderr), (0, ""))
        self.assertIn("     lacks causecode\n     lacks vendorcause\n     not usable as the response\n",
                      done.stdout)
        self.assertEqual(re.findall("^==.*", done.stdout, re.MULTILINE), [
            "== call 1: RADIO_CALL_DIALING", "== calls go over RADIO_T_LTE",
            "== call 1: RADIO_CALL_ACTIVE", "== ended, the cause is not known"])
        code = "".join((ROOT / file).read_text(encoding="utf-8") for file in (
            "examples/client/endpoint.h", "examples/client/endpoint.cc", "examples/client/client.cc",
            "examples/integration_client.cc", "tests/exchange/exchange_test.cc"))
        for language, source in (("cpp", code), ("text", done.stdout)):
            blocks = re.findall(f"```{language}\n(.*?)```", PAGE, re.DOTALL)
            self.assertTrue(blocks)
            for block in blocks:
                self.assertIn(block, source)
        if drawn:
            self.assertRegex(drawn, r"Hangup serial 4\n.*after 2\d{3}\.")
            drawn, page = (re.sub(r"after [\d.]+ ms", "after TIME", text) for text in (drawn, PAGE))
            self.assertIn(f"```mermaid\n{drawn}```\n", page)

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

        def unlisted(link):  # a failure is not an empty list
            link.send("NoResultIndication", modem.CALL_STATE_CHANGED)
            link.receive("Dial")
            serial = link.receive("NoParmRequest", modem.CURRENT_CALLS).serial
            link.send("GetCurrentCallsResponse", serial=serial, error=1)

        def mixed_up(link):  # a response of another type is not believed
            link.send("LastCallFailureCauseResponse", serial=link.receive("Dial").serial, error=0,
                      causecode=16, vendorcause="")
            serial = link.receive("NoParmRequest", modem.CURRENT_CALLS).serial
            link.send("GetCurrentCallsResponse", serial=serial, error=1)
        for script, end in ((refused, "== refused: RADIO_E_RADIO_NOT_AVAILABLE"),
                            (ended, "== ended: CAUSE_NORMAL"),
                            (unlisted, "== the state of the call is not known"),
                            (mixed_up, "== the state of the call is not known")):
            with self.subTest(script=script):
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

    def test_lost_connection_ends_with_an_error(self):
        done = run(NUMBER, script=lambda link: link.receive("Dial"))
        self.assertEqual((done.returncode, done.stderr),
                         (1, "integration_client: the connection ends: the other side closed it\n"))
        self.assertEqual(done.stdout.split("\n", 1)[1], "     request 1 is lost\n"
                         "== the state of the call is not known\n")

    def test_bad_input(self):
        for arguments, status, why in [
                (["socket"], 2, "usage: integration_client SOCKET NUMBER [CAPTURE]\n"),
                (["/nowhere", NUMBER], 1, ": /nowhere: No such file or directory\n"),
                (["/" * 108, NUMBER], 1, "/: File name too long\n"),
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
