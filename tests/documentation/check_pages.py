#!/usr/bin/python3
"""Checks what pages say against what is there: the options of CMake and their defaults, and the names
and bytes in pictures, which must stand in a page that shows the picture.

Usage: check_pages.py PROJECT
Status: 1 with a line per fault.
"""
import pathlib
import re
import sys

# How a page names defaults that depend on where the project stands.
DEFAULTS = {"${PROJECT_IS_TOP_LEVEL}": "ON", "${where_possible}": "AUTO",
            "${CMAKE_INSTALL_DATADIR}/zsh/site-functions": "share/zsh/site-functions",
            '"$ENV{VIRTUAL_MODEM_WERROR}"': "OFF", "${_default}": "fetched"}
# Nobody sets these.
INNER = {f"VIRTUAL_MODEM_{name}" for name in
         ("CRAM", "BARE_PYTHON", "LIBCXX_INCLUDE", "LIBCXX_LIBRARY")}


def options(root: pathlib.Path) -> dict[str, str]:
    """Options in the cache, with their defaults; "found" for programs that CMake looks for."""
    found = {}
    for path in [root / "CMakeLists.txt", *root.glob("cmake/*.cmake"), *root.glob("[!b]*/CMakeLists.txt")]:
        text = path.read_text(encoding="utf-8")
        for name, default in re.findall(r'option\((VIRTUAL_MODEM_\w+)\s+"[^"]*"\s+([^\s)]+)\)', text):
            found[name] = default
        for name, default in re.findall(r"set\((VIRTUAL_MODEM_\w+)\s+(\"[^\"]*\"|\S+)\s+CACHE", text):
            found[name] = default
        for name in re.findall(r"find_program\((VIRTUAL_MODEM_\w+)", text):
            found[name] = "found"
    return {name: DEFAULTS.get(default, default) for name, default in found.items()
            if name not in INNER}


def main(root: pathlib.Path) -> int:
    faults = []
    pages = {path: path.read_text(encoding="utf-8")
             for path in [root / "README.md", *sorted((root / "docs").glob("*.md"))]}
    readme, android = pages[root / "README.md"], pages[root / "docs/android.md"]
    table = {}
    for names, default in re.findall(r"^\| (`VIRTUAL_MODEM_.*?) \| (.*?) \|", readme, re.MULTILINE):
        table.update(dict.fromkeys(re.findall(r"VIRTUAL_MODEM_\w+", names), default.strip("`")))
    there = options(root)
    for name, default in sorted(there.items()):
        if name not in table:
            if name not in android:
                faults.append(f"{name} stands neither in README.md nor in docs/android.md")
        elif table[name] != default and not default.startswith('"'):
            faults.append(f"README.md: the default of {name} is {default}, not {table[name]}")
    faults += [f"README.md: there is no option {name}" for name in sorted(set(table) - set(there))]

    for picture in sorted((root / "docs/pictures").glob("*.svg")):
        shown = [text for text in pages.values() if f"pictures/{picture.name})" in text]
        if not shown:
            faults.append(f"no page shows {picture.name}")
        for kind, words in re.findall(r'class="(name|bytes)">([^<]*)<', picture.read_text(encoding="utf-8")):
            bare = re.sub(r"[\s…]", "", words) if kind == "bytes" else words
            if not any(bare in (re.sub(r"\s", "", text) if kind == "bytes" else text) for text in shown):
                faults.append(f"{picture.name} says '{words}', its page does not")
    for fault in faults:
        print(f"documentation: {fault}", file=sys.stderr)
    return 1 if faults or not there else 0


if __name__ == "__main__":
    if len(sys.argv) != 2:
        sys.exit(__doc__)
    sys.exit(main(pathlib.Path(sys.argv[1])))
