"""Looks at the reference in headless Chromium as a reader does: on a phone and on a desktop, light
and dark, by keyboard. Checks the layout, the search and, given axe-core, the accessibility.

Usage: check_browser.py OUTPUT_DIR [--axe AXE_JS] [--pictures DIR]
Needs chromedriver and chromium.
Status: 1 with a line per fault.
"""

import argparse
import base64
import contextlib
import json
import os
import pathlib
import re
import subprocess
import sys
import tempfile
import time
import urllib.error
import urllib.request

FORMS = {"phone": (390, 844), "desktop": (1280, 800)}
# The rules of axe-core for each: all, and those on colors, which are what differs.
SCHEMES = {"light": None, "dark": ["color-contrast", "link-in-text-block"]}

# What readers type, what must come first, and whether the page must say that it is only similar.
QUERIES = [
    ("0x2af9", "CAUSE_VIRTUAL_MODEM_SESSION_UNAVALIBLE", False),
    ("11001", "CAUSE_VIRTUAL_MODEM_SESSION_UNAVALIBLE", False),
    ("-1", "RADIO_NOT_REGISTERED", False),
    ("cause 17", "BUSY", False),
    ("LastCallFailCause 17", "BUSY", False),
    ("LastCallFailCause=17", "BUSY", False),
    ("Dial", "Dial", False),
    ("dial.clir", "Dial.clir", False),
    ("Dial 3", "Dial.address", False),
    ("sim_busy", "RADIO_E_SIM_BUSY", False),
    ("10.5.5.14", "RegistrationFailCause", False),
    ("the network received it and rejected it", "RADIO_E_NETWORK_REJECT", False),
    ("phone number", "Dial.address", False),
    ("hang up", "Hangup", False),
    ("end the call", "Hangup", False),
    ("why did the call end?", "LastCallFailureCauseResponse", False),
    ("airplane mode", "P_RADIO_STATE_OFF", False),
    ("hnagup", "Hangup", True),
    ("LastCalFailCause 17", "BUSY", True),
    ("GetCurentCalls", "GetCurrentCallsResponse", True),
    ("a busy zzzqqq", "BUSY", True),
    ("zzzqqq", None, False),
]

ARROW_DOWN, ENTER = "\ue015", "\ue007"  # As WebDriver names these keys.
DEEP_LINK = "radio.html#CallAdditionalInfoReq"  # Near the end of the longest page.


class Browser:
    """One headless Chromium, steered over the WebDriver protocol."""

    def __init__(self, driver, profile):
        line = next((l for l in driver.stdout if "started successfully" in l), "")
        port = re.search(r"port (\d+)", line)
        if not port:
            raise OSError("chromedriver does not start")
        self.base = f"http://127.0.0.1:{port[1]}/session"
        # By pipe, not by port: a bare machine may not know the name localhost.
        arguments = ["--headless=new", f"--user-data-dir={profile}", "--hide-scrollbars",
                     "--disable-dev-shm-usage", "--remote-debugging-pipe"]
        if os.geteuid() == 0:
            arguments.append("--no-sandbox")  # Chromium refuses root a sandbox.
        options = {"browserName": "chrome", "goog:chromeOptions": {"args": arguments}}
        session = self._send("POST", "", {"capabilities": {"alwaysMatch": options}})
        self.base += "/" + session["sessionId"]
        self._send("POST", "/timeouts", {"script": 300_000})

    def _send(self, method, path, body=None):
        request = urllib.request.Request(
            self.base + path, json.dumps(body).encode() if body is not None else None,
            {"Content-Type": "application/json"}, method=method)
        try:
            with urllib.request.urlopen(request, timeout=300) as reply:
                return json.load(reply)["value"]
        except urllib.error.HTTPError as error:
            raise OSError(" ".join(json.load(error)["value"]["message"].split("\n")[:2])) from error

    def chromium(self, command, **parameters):
        return self._send("POST", "/goog/cdp/execute", {"cmd": command, "params": parameters})

    def become(self, form, scheme):
        width, height = FORMS[form]
        self.chromium("Emulation.setDeviceMetricsOverride", width=width, height=height,
                      deviceScaleFactor=1, mobile=form == "phone")
        self.chromium("Emulation.setEmulatedMedia",
                      features=[{"name": "prefers-color-scheme", "value": scheme}])

    def open(self, url):
        self._send("POST", "/url", {"url": "about:blank"})  # Else a new anchor reloads nothing.
        self._send("POST", "/url", {"url": url})
        # chromedriver may come back while style and scripts are still on their way.
        there = self.run_until("return [location.href, document.readyState]", [url, "complete"])
        if there != [url, "complete"]:
            raise OSError(f"{url} does not load; there is {there[0]}, {there[1]}")

    def run(self, script, *arguments):
        return self._send("POST", "/execute/sync", {"script": script, "args": arguments})

    def run_until(self, script, wanted):
        """Runs it until it returns what is wanted, for 30 seconds at most. Gives the last result."""
        end = time.monotonic() + 30
        while (result := self.run(script)) != wanted and time.monotonic() < end:
            time.sleep(0.05)
        return result

    def run_async(self, script, *arguments):
        """Runs a script that hands its result to a function, its last argument."""
        return self._send("POST", "/execute/async", {"script": script, "args": arguments})

    def press(self, keys):
        actions = [{"type": kind, "value": key} for key in keys for kind in ("keyDown", "keyUp")]
        self._send("POST", "/actions",
                   {"actions": [{"type": "key", "id": "keys", "actions": actions}]})

    def picture(self, path):
        path.write_bytes(base64.b64decode(self._send("GET", "/screenshot")))

    def quit(self):
        self._send("DELETE", "")


@contextlib.contextmanager
def browser():
    with tempfile.TemporaryDirectory() as profile:
        driver = subprocess.Popen(["chromedriver", "--port=0"], stdout=subprocess.PIPE, text=True,
                                  stderr=subprocess.DEVNULL)
        try:
            chromium = Browser(driver, profile)
            try:
                yield chromium
            finally:
                chromium.quit()
        finally:
            driver.terminate()
            driver.wait()
            driver.stdout.close()


# Faults that any page may have, given the height of the header.
LAYOUT = """
const faults = [];
const header = document.querySelector("header").getBoundingClientRect();
const search = document.getElementById("search").getBoundingClientRect();
if (header.top !== 0) faults.push("the header has scrolled away");
if (search.top < 0 || search.right > innerWidth) faults.push("the search is out of sight");
if (document.documentElement.scrollWidth > innerWidth) faults.push("the page is wider than the screen");
const target = document.querySelector(":target");
if (location.hash && !target) faults.push("no target");
if (target) {
  const top = target.getBoundingClientRect().top;
  if (top < header.bottom || top > innerHeight / 2) faults.push("the target is out of sight");
}
const menu = document.getElementById("menu");
if (getComputedStyle(menu).display !== "none") menu.click();
const contents = document.getElementById("contents");
const box = contents.getBoundingClientRect();
if (box.height === 0 || box.top < header.bottom) faults.push("the contents do not show");
if (contents.scrollHeight > contents.clientHeight) faults.push("the contents need scrolling");
if (contents.classList.contains("open")) {
  contents.querySelector("a").addEventListener("click", (event) => event.preventDefault());
  contents.querySelector("a").click();
  if (contents.getBoundingClientRect().height) faults.push("the contents do not close");
}
const index = document.getElementById("index");
if (index && index.getBoundingClientRect().bottom > innerHeight) faults.push("the index needs scrolling");
return faults;
"""

SEARCH = """
const input = document.getElementById("search");
input.value = arguments[0];
input.dispatchEvent(new Event("input"));
return {status: document.getElementById("status").textContent,
        names: [...document.querySelectorAll("#results code")].map((name) => name.textContent)};
"""

# Everything unfolded and the search open.
AXE_RUN = """
const rules = arguments[0], done = arguments[1];
document.querySelectorAll("details").forEach((part) => { part.open = true; });
axe.run({resultTypes: ["violations"], ...(rules && {runOnly: rules})}).then((result) =>
  done(result.violations.map(({id, help, nodes}) =>
    `${id}: ${help}: ${nodes.length} elements, such as ${nodes[0].html.slice(0, 150)}`)),
  (error) => done([String(error)]));
"""


def check_keys(chromium, start):
    """The way by keyboard: slash, words, arrow, Enter."""
    chromium.open(start)
    chromium.press("/Hangup")
    wanted = chromium.run("return document.querySelectorAll('#results a')[1]?.href")
    chromium.press([ARROW_DOWN, ENTER])
    at = chromium.run_until("return location.href", wanted)
    return [] if wanted and at == wanted else [f"keys lead to {at}, not to {wanted}"]


def check_queries(chromium, start):
    faults = []
    chromium.open(start)
    for query, wanted, is_near in QUERIES:
        found = chromium.run(SEARCH, query)
        first = (found["names"] or [None])[0]
        if first != wanted or found["status"].startswith("Not found. Similar") != is_near:
            faults.append(f"'{query}' finds {first}, {found['status'] or 'as typed'}")
        if wanted is None and not found["status"]:
            faults.append(f"'{query}' finds nothing and the page does not say so")
    return faults


def check(folder, axe, pictures):
    """Faults, a line each."""
    pages = [path.name for path in sorted(folder.glob("*.html"))]
    faults = []
    with browser() as chromium:
        for form in FORMS:
            for page in pages + [DEEP_LINK]:
                chromium.become(form, "light")
                chromium.open(f"{folder.as_uri()}/{page}")
                for scheme in SCHEMES if pictures else ():
                    chromium.become(form, scheme)
                    chromium.picture(pictures / f"{re.sub('[#.]', '-', page)}-{form}-{scheme}.png")
                faults += [f"{form}, {page}: {fault}" for fault in chromium.run(LAYOUT)]
                if axe and page != DEEP_LINK:
                    chromium.run(SEARCH, "number")
                    chromium.run(axe)
                    for scheme, rules in SCHEMES.items():
                        chromium.become(form, scheme)
                        faults += [f"{form}, {scheme}, {page}: {fault}"
                                   for fault in chromium.run_async(AXE_RUN, rules)]
        start = f"{folder.as_uri()}/index.html"
        faults += check_queries(chromium, start) + check_keys(chromium, start)
    print(f"reference: {len(pages)} pages on {' and '.join(FORMS)}, light and dark, "
          f"{len(QUERIES)} searches, {'' if axe else 'no '}axe-core: {len(faults)} faults")
    return faults


if __name__ == "__main__":
    parser = argparse.ArgumentParser(description=__doc__.split("\n")[0])
    parser.add_argument("folder", type=pathlib.Path)
    parser.add_argument("--axe", type=pathlib.Path, help="axe.min.js")
    parser.add_argument("--pictures", type=pathlib.Path, help="a picture of each page goes here")
    options = parser.parse_args()
    try:
        if options.pictures:
            options.pictures.mkdir(parents=True, exist_ok=True)
        found = check(options.folder.resolve(), options.axe and options.axe.read_text(), options.pictures)
    except OSError as error:
        sys.exit(f"reference: {error}")
    for fault in found:
        print(f"reference: {fault}", file=sys.stderr)
    sys.exit(1 if found else 0)
