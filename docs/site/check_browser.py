"""Reads the site as its readers do: axe-core on five kinds of pages, phone and desktop, light and dark;
no page wider than the screen; what the search finds first.

Usage: check_browser.py SITE [--axe AXE_JS] [--pictures DIR]
Status: 1 with a line per fault.
"""

import argparse
import os
import pathlib
import sys

from selenium import webdriver
from selenium.common.exceptions import TimeoutException, WebDriverException
from selenium.webdriver.chrome.service import Service
from selenium.webdriver.support.wait import WebDriverWait

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
PAPER = "return getComputedStyle(document.body).backgroundColor.startsWith('rgb(255')"
TARGET = """[document.querySelector(":target")?.getBoundingClientRect().top].some(
  (top) => top >= 0 && top < innerHeight)"""
FOOT = "return / \\d+\\.\\d+\\.\\d+, commit \\w/.test(document.querySelector('.copyright').innerText)"
# What the page of Dial shows, in an element each; the last one has none.
SHOWN = ["#Dial .request", "#Dial\\\\.address .masked", "#Dial\\\\.clir .required",
         "#Dial\\\\.clir a[href$='#Clir']", "a[href$='#NoResultResponse']"]
HIDDEN = "#Dial\\\\.clir .masked"
AXE = """
const done = arguments[arguments.length - 1];
axe.run({resultTypes: ["violations"]}).then((result) => done(result.violations.map(
  ({id, help, nodes}) => `${id}: ${help}: ${nodes.length}, such as ${nodes.map((node) => node.html.slice(0, 90)).join(' ')}`)),
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

    def comes(self, script):
        """Whether the script gives something true, within ten seconds."""
        try:
            return WebDriverWait(self, 10).until(lambda _: self.execute_script("return " + script))
        except TimeoutException:
            return None

    def first_hit(self, query):
        self.show(f"search.html?q={query}")
        return self.comes("document.querySelector('ul.search a')?.href") or "nothing"


def check(browser, axe, pictures):
    """Faults, a line each."""
    for page in PAGES:
        for form in FORMS:
            for scheme in ("light", "dark"):
                browser.show(page, form, scheme)
                faults = []
                if "?" in page and not browser.comes("document.querySelector('ul.search a')"):
                    faults.append("the search gives nothing")
                if "#" in page and not browser.comes(TARGET):
                    faults.append("the target is out of sight")
                name = page.partition("?")[0].replace("/", "-").replace("#", "-")
                if pictures:
                    browser.save_screenshot(str(pictures / f"{name}-{form}-{scheme}.png"))
                if browser.execute_script(PAPER) != (scheme == "light"):
                    faults.append("the colors are those of the other scheme")
                if not browser.execute_script(FOOT):
                    faults.append("the foot does not name version and commit")
                if "#Dial" in page:
                    faults += [f"{selector}: expected otherwise" for selector in [*SHOWN, HIDDEN]
                               if (selector == HIDDEN) == browser.execute_script(
                                   f"return !!document.querySelector(\"{selector}\")")]
                if browser.execute_script("return document.documentElement.scrollWidth > innerWidth"):
                    faults.append("the page is wider than the screen")
                if axe:
                    browser.execute_script(axe)
                    faults += browser.execute_async_script(AXE)
                yield from (f"{page}, {form}, {scheme}: {fault}" for fault in faults)
    for query, wanted in QUERIES.items():
        found = browser.first_hit(query)
        if not any(part.endswith(wanted) for part in (found, found.partition("#")[0])):
            yield f"search: '{query}' finds {found} first, not {wanted}"


def main():
    parser = argparse.ArgumentParser(description=__doc__.split("\n", maxsplit=1)[0])
    parser.add_argument("site", type=pathlib.Path)
    parser.add_argument("--axe", type=pathlib.Path, help="axe.min.js")
    parser.add_argument("--pictures", type=pathlib.Path, help="a picture of each page goes here")
    options = parser.parse_args()
    if options.pictures:
        options.pictures.mkdir(parents=True, exist_ok=True)
    browser = Browser(options.site.resolve())
    try:
        faults = list(check(browser, options.axe and options.axe.read_text(), options.pictures))
    finally:
        browser.quit()
    for fault in faults:
        print(f"reference: {fault}", file=sys.stderr)
    print(f"reference: {len(PAGES)} kinds of pages, {len(QUERIES)} searches, "
          f"{'' if options.axe else 'no '}axe-core: {len(faults)} faults")
    sys.exit(1 if faults else 0)


if __name__ == "__main__":
    try:
        main()
    except (OSError, WebDriverException) as error:
        sys.exit(f"reference: {error}")
