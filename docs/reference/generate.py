"""Makes the HTML reference of the schema.

Usage: generate.py DESCRIPTOR_SET OUTPUT_DIR PROGRAM

Input:   the descriptor set with source info, exchanges/*.txt (sequence diagrams), templates/
         (pages), assets/ (style and search, copied).
Output:  index.html, exchanges.html, one page per unit, and the search index. The pages need no
         server and no network. PROGRAM is the C++ of all pages as one source file.
Status:  1 with a line when a diagram names no message.
"""

import dataclasses
import html
import json
import pathlib
import re
import shutil
import sys

import jinja2
import markupsafe

import cpp
import schema

HERE = pathlib.Path(__file__).parent
UNIT_TITLES = {
    "radio": "Radio",
    "ims_service": "IMS service",
    "call_size": "Call size",
    "conference": "Conference",
    "data_share": "Data share",
}
WORD = re.compile(r"\b([A-Z]\w+)(\.[a-z]\w+)?\b")
ARROW = re.compile(r"(?P<way>->|<-) (?P<name>\w+)(?:: (?P<note>.+))?")


class Links:
    """Where each declared name is explained, and prose with those names made into links."""

    def __init__(self, units):
        self.pages = {}
        for unit in units:
            for message in unit.messages:
                self.pages[message.name] = f"{unit.name}.html#{message.name}"
                for field in message.fields:
                    name = f"{message.name}.{field.name}"
                    self.pages[name] = f"{unit.name}.html#{name}"
            for enum in unit.enums:
                self.pages[enum.name] = f"{unit.name}.html#{enum.name}"
                for value in enum.values:
                    self.pages[value.name] = f"{unit.name}.html#{value.name}"
        # Ordinary words that happen to be names too: prose does not link them.
        self.ambiguous = {name for name in self.pages if name.isalpha() and
                          (name.isupper() or name[1:].islower())}

    def prose(self, text, own=None):
        """HTML of one paragraph; names other than `own` become links."""

        def link(match):
            name, rest = match[0], ""
            if name not in self.pages:
                name, rest = match[1], match[2] or ""
            if name == own or name in self.ambiguous or name not in self.pages:
                return match[0]
            return f'<a href="{self.pages[name]}"><code>{name}</code></a>{rest}'

        return markupsafe.Markup(WORD.sub(link, html.escape(" ".join(text.split()), quote=False)))

    def paragraphs(self, comment, own=None):
        """HTML of a comment block: paragraphs, and indented lines kept as they stand."""
        out = []
        for block in re.split(r"\n\s*\n", comment.strip("\n")):
            lines = block.split("\n")
            if all(line.startswith("   ") for line in lines):
                body = "\n".join(line[3:] for line in lines)
                out.append(f"<pre tabindex=\"0\">{html.escape(body, quote=False)}</pre>")
            else:
                out.append(f"<p>{self.prose(block, own)}</p>")
        return markupsafe.Markup("\n".join(out))


@dataclasses.dataclass
class Step:
    """One row of a sequence diagram: a message and its direction, or an event (message is None)."""

    message: schema.Message | None
    to_right: bool
    note: str


class Exchange:
    """One sequence diagram, read from a file as exchanges/README.md describes.

    Raises ValueError for a line that does not fit.
    """

    def __init__(self, path, messages):
        head, _, body = path.read_text().partition("\n---\n")
        self.anchor = path.stem.partition("-")[2]
        self.title, _, self.comment = head.partition("\n")
        parties, *steps = body.strip().split("\n")
        self.parties = [party.strip() for party in parties.split("|")]
        if len(self.parties) != 2:
            raise ValueError(f"{path.name}: '{parties}' does not name two parties")
        self.steps = [self._step(line, path, messages) for line in steps]

    @staticmethod
    def _step(line, path, messages):
        if not line.startswith(("->", "<-")):
            return Step(None, False, line)
        arrow = ARROW.fullmatch(line)
        if not arrow or arrow["name"] not in messages:
            raise ValueError(f"{path.name}: '{line}' names no message of the schema")
        return Step(messages[arrow["name"]], arrow["way"] == "->", arrow["note"] or "")


def breakable(name):
    """A name that a narrow column may break after an underscore or before a capital."""
    return markupsafe.Markup(re.sub(r"(?<=_)(?=.)|(?<=[a-z0-9])(?=[A-Z])", "<wbr>", name))


def search_index(units, links):
    """Rows of the search: name, what it is, page, number or null, comment."""
    rows = []
    for unit in units:
        for message in unit.messages:
            rows.append([message.name, message.kind or "message", links.pages[message.name], None,
                         " ".join(message.comment.split())])
            for field in message.fields:
                rows.append([f"{message.name}.{field.name}", "field",
                             links.pages[f"{message.name}.{field.name}"], field.number,
                             " ".join(field.comment.split())])
        for enum in unit.enums:
            rows.append([enum.name, "enumeration", links.pages[enum.name], None,
                         " ".join(enum.comment.split())])
            for value in enum.values:
                rows.append([value.name, f"value of {enum.name}", links.pages[value.name],
                             value.number, " ".join(value.comment.split())])
    return "const SEARCH_INDEX = " + json.dumps(rows, separators=(",", ":")) + ";\n"


def main(descriptor_set, output, program):
    units = schema.load(descriptor_set).units
    links = Links(units)
    messages = {message.name: message for unit in units for message in unit.messages}
    exchanges = [Exchange(path, messages) for path in sorted((HERE / "exchanges").glob("*.txt"))]

    environment = jinja2.Environment(
        loader=jinja2.FileSystemLoader(HERE / "templates"), autoescape=True, trim_blocks=True,
        lstrip_blocks=True, undefined=jinja2.StrictUndefined)
    snippets = cpp.Snippets(units)
    environment.globals.update(units=units, titles=UNIT_TITLES, links=links, exchanges=exchanges,
                               snippets=snippets)
    environment.filters["breakable"] = breakable
    environment.tests["message"] = lambda member: isinstance(member, schema.Message)

    output.mkdir(parents=True, exist_ok=True)
    shutil.copytree(HERE / "assets", output, dirs_exist_ok=True)
    (output / "search-index.js").write_text(search_index(units, links))
    pages = [("index", {}), ("exchanges", {})] + [("unit", {"unit": unit}) for unit in units]
    for template, variables in pages:
        name = variables["unit"].name if variables else template
        page = environment.get_template(template + ".html").render(page=name, **variables)
        (output / f"{name}.html").write_text(page)
    program.write_text(snippets.program())


if __name__ == "__main__":
    if len(sys.argv) != 4:
        sys.exit(__doc__)
    try:
        main(sys.argv[1], *map(pathlib.Path, sys.argv[2:]))
    except (ValueError, OSError) as error:
        sys.exit(f"reference: {error}")
