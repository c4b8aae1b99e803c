"""Reads the site as its readers do: axe-core on five kinds of pages, phone and desktop, light and dark;
no page wider than the screen, and nothing of it missing; what the search finds first.

Usage: check_browser.py SITE AXE_JS [PICTURES]
AXE_JS is axe.min.js, or - to do without; PICTURES a folder for a picture of each page.
Status: 1 with a line per fault.
"""
import os
import pathlib
import sys
import time

from selenium import webdriver
from selenium.webdriver.chrome.service import Service

FORMS = {"phone": (390, 844), "desktop": (1280, 800)}
# First page, guide, schema, header, search.
PAGES = ["index.html", "docs/captures.html", "schema/radio/calls.html#Dial.clir", "headers/text.html",
         "search.html?q=dial+clir"]
# What readers type, and the link that must come first.
QUERIES = {
    "Dial": "#Dial",
    "BUSY": "#BUSY",
    "LastCallFailCause 17": "#BUSY",
    "dial.clir": "#Dial.clir",
    "sim_busy": "RADIO_E_SIM_BUSY",
    "RADIO_E_SIM_BUSY": "#RADIO_E_SIM_BUSY",
    "11002": "#CAUSE_VIRTUAL_MODEM_CALL_CAPABILITY_UNAVALIBLE",
    "0x2afa": "#CAUSE_VIRTUAL_MODEM_CALL_CAPABILITY_UNAVALIBLE",
    "frame": "#frame",
    "timeout": "docs/integration.html",
    "MissingFields": "headers/text.html#missingfields",
}
FIRST_HIT = "return document.querySelector('ul.search a')?.href"
# What is wrong with a page: for each fault, whether it is there.
FAULTS = """
const light = arguments[0], there = (selector) => document.querySelector(selector) !== null;
const target = document.querySelector(":target")?.getBoundingClientRect().top;
return Object.entries({
  "the target is out of sight": location.hash && !(target >= 0 && target < innerHeight),
  "the colors are those of the other scheme":
    getComputedStyle(document.body).backgroundColor.startsWith("rgb(255") !== light,
  "the foot does not name version and commit":
    !/ \\d+\\.\\d+\\.\\d+, commit \\w/.test(document.querySelector(".copyright").innerText),
  "the entry of Dial lacks a badge or a link, or has one too many":
    there("#Dial") && !(there("#Dial .request") && there("#Dial\\\\.address .masked") &&
      there("#Dial\\\\.clir .required") && there("#Dial\\\\.clir a[href$='#Clir']") &&
      there("a[href$='#NoResultResponse']") && !there("#Dial\\\\.clir .masked") &&
      document.querySelector("#Dial\\\\.clir .wire").innerText === "tag 20 (varint)" &&
      !document.body.innerText.includes("C++:")),
  "the page is wider than the screen": document.documentElement.scrollWidth > innerWidth,
}).filter(([, is_there]) => is_there).map(([fault]) => fault);
"""
MISSING = "ERR_FILE_NOT_FOUND"  # of what the browser logs; it may not fetch all that the scripts would
AXE = """
const done = arguments[arguments.length - 1];
axe.run({resultTypes: ["violations"]}).then((result) => done(result.violations.map(
  ({id, help, nodes}) => `${id}: ${help}: ${nodes.length}, such as ${nodes[0].html.slice(0, 90)}`)),
  (error) => done([String(error)]));
"""


class Browser(webdriver.Chrome):
    def __init__(self, site):
        options = webdriver.ChromeOptions()
        # By pipe, not by port: a bare machine may not know the name localhost.
        for argument in ("--headless=new", "--hide-scrollbars", "--disable-dev-shm-usage",
                         "--remote-debugging-pipe"):
            options.add_argument(argument)
        if os.geteuid() == 0:
            options.add_argument("--no-sandbox")  # Chromium refuses root a sandbox.
        options.set_capability("goog:loggingPrefs", {"browser": "SEVERE"})
        super().__init__(service=Service("/usr/bin/chromedriver"), options=options)
        self.set_script_timeout(300)
        self.site = site

    def show(self, page, form="desktop", scheme="light"):
        width, height = FORMS[form]
        self.execute_cdp_cmd("Emulation.setDeviceMetricsOverride", {
            "width": width, "height": height, "deviceScaleFactor": 1, "mobile": form == "phone"})
        self.execute_cdp_cmd("Emulation.setEmulatedMedia", {
            "features": [{"name": "prefers-color-scheme", "value": scheme}]})
        self.get("about:blank")  # Else a new anchor reloads nothing.
        self.get(f"{self.site.as_uri()}/{page}")

    def until(self, good, script, *arguments):
        """What the script gives, once that is good or ten seconds are over."""
        end = time.monotonic() + 10
        while not good(given := self.execute_script(script, *arguments)) and time.monotonic() < end:
            time.sleep(0.1)
        return given


def check(browser, axe, pictures):
    """Faults, a line each."""
    for page, form, scheme in ((p, f, s) for p in PAGES for f in FORMS for s in ("light", "dark")):
        browser.show(page, form, scheme)
        faults = browser.until(lambda found: not found, FAULTS, scheme == "light")
        if "?" in page and not browser.until(bool, FIRST_HIT):
            faults.append("the search gives nothing")
        faults += [entry["message"] for entry in browser.get_log("browser") if MISSING in entry["message"]]
        if pictures:
            name = page.partition("?")[0].replace("/", "-").replace("#", "-")
            browser.save_screenshot(str(pictures / f"{name}-{form}-{scheme}.png"))
        if axe:
            browser.execute_script(axe)
            faults += browser.execute_async_script(AXE)
        yield from (f"{page}, {form}, {scheme}: {fault}" for fault in faults)
    for query, wanted in QUERIES.items():
        browser.show(f"search.html?q={query}")
        found = browser.until(bool, FIRST_HIT) or "nothing"
        if not any(part.endswith(wanted) for part in (found, found.partition("#")[0])):
            yield f"search: '{query}' finds {found} first, not {wanted}"


def main(site, axe, pictures=None):
    if pictures:
        pictures.mkdir(parents=True, exist_ok=True)
    browser = Browser(site.resolve())
    try:
        faults = list(check(browser, axe.read_text() if axe.name != "-" else "", pictures))
    finally:
        browser.quit()
    for fault in faults:
        print(f"reference: {fault}", file=sys.stderr)
    print(f"reference: {len(PAGES)} kinds of pages, {len(QUERIES)} searches, axe-core: {axe}: "
          f"{len(faults)} faults")
    sys.exit(1 if faults else 0)


if __name__ == "__main__":
    main(*map(pathlib.Path, sys.argv[1:]))
