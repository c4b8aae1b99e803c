#!/usr/bin/python3
"""Holds the table of tests/README.md to the tests that CTest lists. Usage: check_readme.py BUILD_DIR"""
import json
import pathlib
import re
import subprocess
import sys

listed = json.loads(subprocess.run(["ctest", "--show-only=json-v1"], cwd=sys.argv[1], check=True,
                                   stdout=subprocess.PIPE).stdout)
tests = {test["name"] for test in listed["tests"]}
page = pathlib.Path(__file__).with_name("README.md").read_text(encoding="utf-8")
rows = set(re.findall(r"^\| `([^`]+)` \|", page, re.MULTILINE))
faults = [f"no row says what it catches: {name}" for name in sorted(tests - rows)]
faults += [f"CTest has no such test: {name}" for name in sorted(rows - tests)]
print("\n".join(f"tests/README.md: {fault}" for fault in faults) or f"{len(rows)} tests, {len(rows)} rows")
sys.exit(1 if faults else 0)
