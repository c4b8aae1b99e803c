"""Checks every link of the HTML and Markdown pages below a folder: what it names is there, anchor
included, below that folder; style sheets and scripts too. Addresses of other machines are not asked.

Usage: check_links.py FOLDER
Status: 1 with a line per fault.
"""

import html.parser
import pathlib
import re
import sys
import urllib.parse

FENCED = re.compile(r"^(```+).*?^\1$|`[^`\n]+`", re.MULTILINE | re.DOTALL)


class Page(html.parser.HTMLParser):
    """The anchors of a page, and what it links to."""

    def __init__(self, path):
        super().__init__()
        self.anchors, self.links = set(), []
        text = path.read_text(encoding="utf-8")
        if path.suffix == ".md":
            original, text = text, FENCED.sub("", text)
            self.links = re.findall(r"\]\(([^)\s]+)\)", text)
            self.anchors = {re.sub(r"[^\w -]", "", title.lower()).replace(" ", "-")
                            for title in re.findall(r"^#+ +(.*?) *$", original, re.MULTILINE)}
        elif path.suffix == ".css":
            self.links = re.findall(r"""url\(["']?([^"')#][^"')]*)""", text)
        else:
            self.feed(text)

    def handle_starttag(self, tag, attrs):
        self.links += [value for name, value in attrs if name in ("href", "src") and value]
        self.anchors.update(value for name, value in attrs if name in ("id", "name"))


def main(folder):
    pages = {path.resolve(): Page(path) for path in sorted(folder.rglob("*"))
             if path.suffix in (".html", ".md", ".css")}
    count, faults = 0, []
    for path, page in pages.items():
        for link in page.links:
            parts = urllib.parse.urlsplit(link)
            if parts.scheme:
                continue
            count += 1
            target = (path.parent / urllib.parse.unquote(parts.path)).resolve() if parts.path else path
            anchor = urllib.parse.unquote(parts.fragment)
            if not target.exists() or folder.resolve() not in (target, *target.parents):
                faults.append(f"{path}: {link} leads nowhere")
            elif anchor and target in pages and anchor not in pages[target].anchors:
                faults.append(f"{path}: {link}: there is no such anchor")
    for fault in faults:
        print(f"links: {fault}", file=sys.stderr)
    print(f"links: {count} links in {len(pages)} pages, {len(faults)} faults")
    return 1 if faults or not count else 0


if __name__ == "__main__":
    if len(sys.argv) != 2:
        sys.exit(__doc__)
    sys.exit(main(pathlib.Path(sys.argv[1])))
