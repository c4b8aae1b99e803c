"""Checks the links of the reference: every page and anchor that a page points to exists, no anchor
stands twice in a page, and nothing is fetched from elsewhere.

Usage: check_links.py OUTPUT_DIR
Status: 1 with a line per fault.
"""

import html.parser
import pathlib
import re
import sys


class Page(html.parser.HTMLParser):
    """The anchors of one page, and what it links to."""

    def __init__(self, path):
        super().__init__()
        self.anchors = []
        self.links = []
        self.feed(path.read_text())
        self.close()

    def handle_starttag(self, tag, attrs):
        for name, value in attrs:
            if name == "id":
                self.anchors.append(value)
            elif name in ("href", "src", "xlink:href"):
                self.links.append(value)


def main(folder):
    pages = {path.name: Page(path) for path in sorted(folder.glob("*.html"))}
    links = [(name, link) for name, page in pages.items() for link in page.links]
    # The search index is a list of rows whose third column is a link.
    rows = re.findall(r'\["[^"]*","[^"]*","([^"]*)"', (folder / "search-index.js").read_text())
    links += [("search-index.js", link) for link in rows]

    faults = [f"{name}: anchor {anchor} stands twice" for name, page in pages.items()
              for anchor in sorted(set(page.anchors)) if page.anchors.count(anchor) > 1]
    for name, link in links:
        target, _, anchor = link.partition("#")
        target = target or name
        if not (folder / target).is_file() or (anchor and anchor not in pages[target].anchors):
            faults.append(f"{name}: {link} leads nowhere")
    for fault in faults:
        print(f"reference: {fault}", file=sys.stderr)
    print(f"reference: {len(links)} links in {len(pages)} pages, {len(faults)} faults")
    return 1 if faults or not rows else 0


if __name__ == "__main__":
    if len(sys.argv) != 2:
        sys.exit(__doc__)
    sys.exit(main(pathlib.Path(sys.argv[1])))
