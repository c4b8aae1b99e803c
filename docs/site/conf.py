"""The site: guides, schema, headers and the exchanges of the demo, by Sphinx.

Before Sphinx reads its source folder, this fills it: with the Markdown pages at the paths they have
in the repository, so that links among them hold, and with pages generated from the schema and the headers.
Environment: VIRTUAL_MODEM_DESCRIPTOR_SET, the schema; VIRTUAL_MODEM_VERSION; VIRTUAL_MODEM_COMMIT,
by default asked of git.
"""

import os
import pathlib
import re
import shutil
import subprocess
import sys

HERE = pathlib.Path(__file__).parent
ROOT = HERE.parents[1]
sys.path[:0] = [str(HERE), str(ROOT / "src")]

from pygments.lexers.special import TextLexer  # noqa: E402

import schema  # noqa: E402
from schema_pages import places, slug  # noqa: E402

TRANSCRIPT = ROOT / "tests/exchange/transcript.txt"
DESCRIPTOR_SET = os.environ["VIRTUAL_MODEM_DESCRIPTOR_SET"]

project = "virtual-modem-protos"
version = release = os.environ["VIRTUAL_MODEM_VERSION"]
commit_name = os.environ.get("VIRTUAL_MODEM_COMMIT") or subprocess.run(
    ["git", "-C", ROOT, "describe", "--always", "--dirty", "--exclude=*"],
    capture_output=True, text=True, check=False).stdout.strip() or "unknown"
copyright = f"{project} {version}, commit {commit_name}"  # the foot of every page
extensions = ["myst_parser", "schema_pages", "diagrams"]
myst_heading_anchors = 4
nitpicky = True
html_theme = "furo"
html_title = f"{project} {version}"
html_static_path = [str(HERE / "site.css")]
html_css_files = ["site.css"]
html_show_sphinx = False
html_copy_source = False
html_use_index = False
html_theme_options = {"footer_icons": []}
highlight_language = "none"
pygments_style, pygments_dark_style = "xcode", "github-dark"

UNITS = {"radio": "Radio", "ims_service": "IMS service", "conference": "Conference",
         "call_size": "Call size", "data_share": "Data share"}
STEP = re.compile(r"\s+(?P<way>->|<-) (?P<type>\w+) +(?P<size>\d+)  (?P<fields>.*)")


def exchanges():
    """The demo's scenarios, from the transcript that its test compares: name, what, steps."""
    text = TRANSCRIPT.read_text(encoding="utf-8")
    for part in re.split(r"^(?=[\w-]+: )", text, flags=re.MULTILINE)[1:]:
        name, _, what = part.partition("\n")[0].partition(": ")
        steps = [match for match in map(STEP.fullmatch, part.split("\n")) if match]
        if steps:
            yield name, what, steps


def toctree(entries, caption="", hidden=False, depth=2):
    options = f":maxdepth: {depth}\n" + (f":caption: {caption}\n" if caption else "")
    return f"```{{toctree}}\n{options}{':hidden:' if hidden else ''}\n" + "\n".join(entries) + "\n```\n"


def declarations(header):
    """A header as Markdown: each declaration with its comment, headed by its name."""
    last = None
    for block in re.split(r"\n\n+(?=[^\s}])", header.read_text(encoding="utf-8").strip()):
        code = re.sub(r"//.*|/\*.*?\*/", "", block)
        named = re.search(r"^(?:class|struct|enum class|enum) (\w+)|\b(\w+)\(", code, re.MULTILINE)
        name = (named[1] or named[2]) if named and "#" not in code else last
        yield (f"\n## {name}\n" if name != last else "") + f"\n```cpp\n{block}\n```\n"
        last = name


def pages(everything):
    """Every page of the source folder: path and text."""
    guides = [path.relative_to(ROOT) for path in
              sorted([*ROOT.glob("*.md"), *ROOT.glob("docs/*.md"), *ROOT.glob("examples/**/*.md")])
              if path != ROOT / "README.md" and "node_modules" not in path.parts]
    for guide in guides:
        def to_index(match, depth=len(guide.parts) - 1):
            return f"]({match[1]}index.md" if match[1].count("..") == depth else match[0]
        text = (ROOT / guide).read_text(encoding="utf-8")
        yield guide, re.sub(r"\]\(((?:\.\./)*)README\.md", to_index, text)

    headers = sorted((ROOT / "include/virtual_modem").glob("*.h"))
    for header in headers:
        yield pathlib.Path("headers", header.stem + ".md"), (
            f"# {header.name}\n\n`#include <virtual_modem/{header.name}>`\n" +
            "".join(declarations(header)))

    for unit in everything.units:
        sections = []
        for number, section in enumerate(unit.sections):
            sections.append(slug(section.title))
            yield pathlib.Path("schema", unit.name, sections[-1] + ".md"), (
                f"# {section.title}\n\n```{{schema-section}} {unit.name} {number}\n```\n")
        package = f" In package `{unit.package}`." if unit.package else ""
        yield pathlib.Path("schema", unit.name, "index.md"), (
            f"# {UNITS.get(unit.name, unit.name)}\n\n" + " ".join(unit.comment.split()) +
            f"\n\n`#include <{unit.file.replace('.proto', '.pb.h')}>`.{package}\n\n" + toctree(sections))
    yield pathlib.Path("schema/index.md"), (
        (HERE / "schema.md").read_text(encoding="utf-8") +
        toctree([f"{unit.name}/index" for unit in everything.units]))

    text = "# Exchanges of the demo\n\nWhat `scripts/demo all` prints, step by step; its test compares it.\n"
    for name, what, steps in exchanges():
        text += f"\n(exchange-{name})=\n## {name}\n\n{what.capitalize()}.\n\n"
        for step in steps:
            side = "→ to the modem" if step["way"] == "->" else "← to the telephony side"
            text += f"- {side}: `{step['type']}`, {step['size']} bytes\n\n  ``{step['fields']} ``\n"
    yield pathlib.Path("schema/exchanges.md"), text

    readme = (ROOT / "README.md").read_text(encoding="utf-8")
    yield pathlib.Path("index.md"), readme + "\n" + "".join([
        toctree([str(path) for path in guides if path.parts[0] == "docs"], "Guides", True),
        toctree([str(path) for path in guides if path.parts[0] == "examples"], "Examples", True),
        toctree(["schema/index", "schema/exchanges"], "Schema", True, 3),
        toctree([f"headers/{header.stem}" for header in headers], "Headers", True),
        toctree([str(path) for path in guides if len(path.parts) == 1], "Project", True)])


def fill(app):
    source = pathlib.Path(app.srcdir)
    shutil.rmtree(source)  # so every page is read again, and nothing old stays
    for folder in ("examples", "docs/pictures"):  # what pages link to beside other pages
        shutil.copytree(ROOT / folder, source / folder,
                        ignore=shutil.ignore_patterns("node_modules", "*.md"))
    for relative, text in pages(app.virtual_modem_schema):
        path = source / relative
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_text(text, encoding="utf-8")


# What the theme leaves out for those who read by ear or by keyboard; its word before the name of the
# release, which stands where a copyright would; and, as Debian 12 packages it,
# the dark scheme where the system asks for it, and a style that no page from disk finds.
REPAIRS = [
    ('|| "auto"', '|| (matchMedia("(prefers-color-scheme: dark)").matches ? "dark" : "light")'),
    ("@import url(/javascript/normalize.css/normalize.css);", ""),
    ('<p class="caption" role="heading">', '<p class="caption" role="heading" aria-level="2">'),
    ('<aside class="sidebar-drawer">', '<aside class="sidebar-drawer" aria-label="Site">'),
    ('<aside class="toc-drawer', '<aside aria-label="On this page" class="toc-drawer'),
    ('<label class="overlay', '<label aria-hidden="true" class="overlay'),
    ('<div class="content-icon-container">',
     '<div class="content-icon-container" role="navigation" aria-label="Tools">'),
    ('<pre>', '<pre tabindex="0">'),
    ('<div class="table-wrapper', '<div tabindex="0" class="table-wrapper'),
    ("Copyright &#169; ", ""),
    ('<div id="search-results">', '<h1>Search</h1><div id="search-results">'),
]


def repair(app, _error):
    for path in [*pathlib.Path(app.outdir).rglob("*.html"), *pathlib.Path(app.outdir).rglob("*.css")]:
        text = old = path.read_text(encoding="utf-8")
        for wrong, right in REPAIRS:
            text = text.replace(wrong, right)
        if text != old:
            path.write_text(text, encoding="utf-8")


def setup(app):
    app.virtual_modem_schema = schema.load(DESCRIPTOR_SET)
    app.virtual_modem_places = places(app.virtual_modem_schema)
    carried = {}
    for name, _, steps in exchanges():
        for step in steps:
            carried.setdefault(step["type"], {})[name] = None
    app.virtual_modem_exchanges = carried
    for language in ("gdb", "mermaid"):
        app.add_lexer(language, TextLexer)
    app.connect("builder-inited", fill)
    app.connect("build-finished", repair)
