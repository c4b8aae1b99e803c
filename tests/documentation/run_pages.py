#!/usr/bin/python3
"""Runs the shell blocks of pages, in order, in one shell session, as a reader would.

Usage: run_pages.py [--quick] [--in ROOT [--env WORDS]] FOLDER PAGE...

FOLDER is the clone in which each page starts and whose pages are read; with --in it stands below ROOT,
into which every command changes its root first. Exit status 1 at the first block that fails.

  ```sh       is run; every command in it must succeed
  ```console  is run, "$ " before each command; what it prints must be what the page shows
  any other   is for the eye, unless <!-- file: PATH --> stands before it: then it is written there

A shell block after <!-- not run: REASON --> is counted and left out, with --quick also one after
<!-- slow: REASON -->. What stands after <!-- printed by: COMMAND --> is what the command prints, such
as a diagram; a block of language text must say so.
"""
import argparse
import collections
import pathlib
import re
import subprocess
import sys
import time

# What a block exports, and the folder it changes to, hold for those that follow.
PRELUDE = """
if [ -f /tmp/session ]; then . /tmp/session; fi
trap '{ export -p; printf "cd %q\\n" "$PWD"; } >/tmp/session' EXIT
"""


class Block:
    def __init__(self, page: str, line: int, language: str, mark: str):
        self.place = f"{page}:{line}"
        self.language = language
        self.mark = mark
        self.lines: list[str] = []


def blocks_of(page: str, text: str) -> list[Block]:
    blocks: list[Block] = []
    block = None
    mark = ""
    in_list = previous_blank = False
    for number, line in enumerate(text.splitlines(), 1):
        fence = re.match(r"```(\w*)$", line)
        if block is not None:
            if line == "```":
                blocks.append(block)
                block = None
            else:
                block.lines.append(line)
        elif fence:
            block = Block(page, number, fence[1], mark)
            mark = ""
        elif comment := re.match(r"<!-- ((?:not run|slow|file|printed by): .*\S) -->$", line):
            mark = comment[1]
        elif line.strip():
            if mark:
                sys.exit(f"{page}:{number}: no block follows <!-- {mark} -->")
            if line.startswith("    ") and previous_blank and not in_list:
                sys.exit(f"{page}:{number}: an indented block does not say what it is; use a fence")
            in_list = bool(re.match(r"( |[-*] |\d+\. )", line))
        previous_blank = not line.strip()
    if block is not None:
        sys.exit(f"{block.place}: the block does not end")
    return blocks


def main() -> None:
    parser = argparse.ArgumentParser(description=__doc__,
                                     formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--quick", action="store_true", help="leave out what is marked as slow")
    parser.add_argument("--in", dest="root", type=pathlib.Path)
    parser.add_argument("--env", default="HOME=/root TERM=dumb",
                        help="the environment with --in, NAME=VALUE with blanks between")
    parser.add_argument("folder", type=pathlib.Path)
    parser.add_argument("pages", nargs="+")
    options = parser.parse_args()
    outside = options.folder
    command = ["bash", "-c"]
    if options.root:
        outside = options.root / options.folder.relative_to("/")
        command = ["chroot", str(options.root), "env", "-i", *options.env.split(),
                   "PATH=/usr/local/sbin:/usr/local/bin:/usr/sbin:/usr/bin:/sbin:/bin", *command]

    def run(script: str, **output) -> subprocess.CompletedProcess:
        return subprocess.run([*command, PRELUDE + script], text=True, errors="replace",
                              stdin=subprocess.DEVNULL, **output)

    def fail(block: Block, what: str) -> None:
        sys.exit(f"documentation: {block.place}: {what}")

    counts: collections.Counter[str] = collections.Counter()
    skipped: collections.Counter[str] = collections.Counter()
    start = time.monotonic()
    for page in options.pages:
        run(f"cd {options.folder}")
        for block in blocks_of(page, (outside / page).read_text(encoding="utf-8")):
            text = "\n".join(block.lines) + "\n"
            kind, _, argument = block.mark.partition(": ")
            if kind == "file":
                path = outside / argument
                path.parent.mkdir(parents=True, exist_ok=True)
                path.write_text(text, encoding="utf-8")
                counts["files"] += 1
            elif kind == "printed by":
                counts["run"] += 1
                printed = run(argument, stdout=subprocess.PIPE, stderr=subprocess.STDOUT).stdout
                if printed != text:
                    fail(block, f"'{argument}' prints\n{printed}and not\n{text}")
            elif block.language == "text" and kind != "not run":
                fail(block, "nothing compares it; say <!-- printed by: COMMAND --> before it")
            elif block.language in ("bash", "shell"):
                fail(block, "call it sh or console")
            elif kind == "not run" or kind == "slow" and options.quick:
                skipped[argument] += 1
            elif block.language not in ("sh", "console"):
                continue
            else:
                print(f"documentation: {block.place} ({time.monotonic() - start:.0f}s)", flush=True)
                counts["run"] += 1
                if block.language == "sh":
                    done = run("set -eo pipefail\n" + text, stdout=subprocess.PIPE,
                               stderr=subprocess.STDOUT)
                    if done.returncode:
                        fail(block, f"status {done.returncode} from\n{text}\n{done.stdout}")
                    continue
                if not text.startswith("$ "):
                    fail(block, "does not begin with a command")
                for part in re.split(r"^\$ ", text, flags=re.MULTILINE)[1:]:
                    entered, _, shown = part.partition("\n")
                    printed = run(entered, stdout=subprocess.PIPE, stderr=subprocess.STDOUT).stdout
                    if printed != shown:
                        fail(block, f"'{entered}' prints\n{printed}and not\n{shown}")
    print(f"documentation: {counts['run']} blocks run, {counts['files']} files written,"
          f" {sum(skipped.values())} blocks not run")
    for reason, count in skipped.items():
        print(f"  {count} not run: {reason}")


if __name__ == "__main__":
    main()
