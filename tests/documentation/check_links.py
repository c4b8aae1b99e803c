"""Checks the links of installed Markdown pages: what each one names is there, anchor included, below the
same folder. Usage: check_links.py FOLDER
"""
import pathlib
import re
import sys

folder = pathlib.Path(sys.argv[1]).resolve()
texts = {path: path.read_text(encoding="utf-8") for path in folder.rglob("*.md")}
anchors = {path: {re.sub(r"[^\w -]", "", title.lower()).replace(" ", "-")
                  for title in re.findall(r"^#+ +(.*?) *$", text, re.MULTILINE)}
           for path, text in texts.items()}
count, faults = 0, []
for path, text in texts.items():
    prose = re.sub(r"(?ms)^(```+).*?^\1$|`[^`\n]+`", "", text)
    for link in re.findall(r"\]\((?!https?:|mailto:)([^)\s]+)\)", prose):
        file, _, anchor = link.partition("#")
        target = (path.parent / file).resolve() if file else path
        count += 1
        if not target.exists() or folder not in (target, *target.parents) or (
                anchor and target in anchors and anchor not in anchors[target]):
            faults.append(f"{path}: {link} leads nowhere")
sys.exit("\n".join(faults) or not count)
