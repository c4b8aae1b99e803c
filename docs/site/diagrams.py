"""Sphinx extension: draws the sequence diagrams that `virtual-modem-inspect log --diagram` writes.

Code hosts draw them from blocks of language mermaid; the site does it here, without a script from
the network, in the colors of the theme.
"""

import html
import re
import textwrap

from docutils import nodes

LEFT, RIGHT, LINE = 90, 630, 18
PARTICIPANT = re.compile(r"participant (\w+) as (.+)")
ARROW = re.compile(r"(\w+)(->>|-->>|-\))(\w+): (.+)")
NOTE = re.compile(r"Note over [\w,]+: (.+)")


def text_of(words):
    """Mermaid's text, its codes of characters decoded, as lines that fit."""
    words = re.sub(r"#(\d+);", lambda code: chr(int(code[1])), words)
    return [line for part in words.split("<br/>") for line in textwrap.wrap(part, 78)]


def draw(source):
    names, parts, y = {}, [], 50
    for line in filter(None, map(str.strip, source.split("\n")[1:])):
        if found := PARTICIPANT.fullmatch(line):
            names[found[1]] = (LEFT, RIGHT)[len(names)]
            parts.append(f'<text x="{names[found[1]]}" y="20" class="party">{html.escape(found[2])}</text>')
            continue
        arrow, note = ARROW.fullmatch(line), NOTE.fullmatch(line)
        if not arrow and not note:
            raise ValueError(f"diagram: '{line}' is no line of log --diagram")
        lines = text_of((arrow or note)[4 if arrow else 1])
        top, y = y, y + LINE * len(lines)
        if note:
            parts.append(f'<rect x="{LEFT - 30}" y="{top - LINE + 4}" width="{RIGHT - LEFT + 60}" '
                         f'height="{y - top + 4}" rx="3"/>')
        parts += [f'<text x="{(LEFT + RIGHT) // 2}" y="{top + LINE * row}">{html.escape(words)}</text>'
                  for row, words in enumerate(lines)]
        if arrow:
            kind = ' class="answer"' if arrow[2] == "-->>" else ""
            parts.append(f'<path d="M{names[arrow[1]]} {y - 8}H{names[arrow[3]]}"{kind}/>')
        y += 16
    lives = "".join(f'<path class="life" d="M{x} 28V{y - 16}"/>' for x in names.values())
    return (f'<svg class="sequence" viewBox="0 0 720 {y}" role="img" '
            f'aria-label="Sequence diagram"><defs><marker id="tip" viewBox="0 0 8 8" refX="8" refY="4" '
            f'markerWidth="8" markerHeight="8" orient="auto"><path d="M0 0L8 4L0 8z"/></marker></defs>'
            f'{lives}{"".join(parts)}</svg>')


def replace(_app, doctree):
    for block in list(doctree.findall(nodes.literal_block)):
        if block.get("language") == "mermaid" and block.astext().startswith("sequenceDiagram"):
            block.replace_self(nodes.raw("", draw(block.astext()), format="html"))


def setup(app):
    app.connect("doctree-read", replace)
    return {"parallel_read_safe": True, "parallel_write_safe": True}
