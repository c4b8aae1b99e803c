#!/usr/bin/python3
"""Prints what the library takes: in its file, at load, and in memory for each message.

Usage: footprint.py BENCH_DIR NAME=LIBRARY...        the first library is the one to compare with
"""
import pathlib
import random
import re
import statistics
import subprocess
import sys
import tempfile

SECTIONS = [".text", ".rodata", ".data.rel.ro", ".data", ".bss", ".eh_frame", ".dynsym", ".dynstr",
            ".gnu.hash", ".rela.dyn", ".rela.plt", ".relr.dyn", ".init_array"]
LOADS = 30  # of each library in each mode


def run(*command) -> str:
    return subprocess.run(command, check=True, capture_output=True, text=True).stdout


def inspect(stripped: pathlib.Path) -> dict[str, int]:
    """File size, sections, relocations and exports of a stripped library."""
    facts = {"stripped file": stripped.stat().st_size}
    sections = {fields[0]: int(fields[1]) for line in run("size", "-A", stripped).splitlines()
                if len(fields := line.split()) == 3 and fields[1].isdigit()}
    for section in SECTIONS:
        facts[section] = sections.get(section, 0)
    relocations = run("readelf", "--wide", "--relocs", stripped)
    packed = re.search(r"entries:\s+(\d+) offsets", relocations)
    facts["relocations: by symbol"] = len(re.findall(r"\bR_X86_64_(?:64|GLOB_DAT|JUMP_SLO)", relocations))
    facts["relocations: relative"] = len(re.findall(r"_RELATIVE", relocations))
    facts["relocations: packed"] = int(packed[1]) if packed else 0
    facts["exported names"] = len(run("nm", "-D", "--defined-only", stripped).splitlines())
    facts["static initializers"] = sections.get(".init_array", 0) // 8
    return facts


def load_times(bench: pathlib.Path, libraries: dict[str, pathlib.Path]) -> dict:
    """Microseconds and page faults of dlopen, the libraries that each needs being loaded already."""
    times = {(name, mode): [] for name in libraries for mode in ("lazy", "bound")}
    for key in random.sample(list(times) * LOADS, len(times) * LOADS):
        name, mode = key
        runtime = re.search(r"NEEDED.*\[(\S*protobuf\S*)\]", run("readelf", "-d", libraries[name]))[1]
        beside = libraries[name].parent / runtime
        out = run(bench / "virtual-modem-load-time", mode, beside if beside.exists() else runtime,
                  libraries[name])
        times[key].append([float(number) for number in out.split()])
    return {key: [statistics.median(column) for column in zip(*runs)] for key, runs in times.items()}


def table(rows: list[list]) -> None:
    rows = [[f"{cell:,}" if isinstance(cell, int) else str(cell) for cell in row] for row in rows]
    widths = [max(map(len, column)) for column in zip(*rows)]
    for first, *rest in rows:
        print("  ".join([first.ljust(widths[0]), *(c.rjust(w) for c, w in zip(rest, widths[1:]))]))


def main() -> None:
    bench = pathlib.Path(sys.argv[1])
    originals = {name: pathlib.Path(path).resolve()
                 for name, path in (argument.split("=", 1) for argument in sys.argv[2:])}
    with tempfile.TemporaryDirectory() as folder:
        libraries = {}
        for name, original in originals.items():
            libraries[name] = pathlib.Path(folder) / str(len(libraries)) / original.name
            libraries[name].parent.mkdir()
            run("strip", "-o", libraries[name], original)
            # A runtime that was built along stands in the folder above.
            for runtime in original.parents[1].glob("libprotobuf*"):
                run("strip", "-o", libraries[name].parent / runtime.name, runtime)
        facts = {name: inspect(path) for name, path in libraries.items()}
        times = load_times(bench, libraries)

    names = list(libraries)
    base = names[0]
    print("Library file: bytes and counts")
    table([["", *names], *([fact, *(facts[name][fact] for name in names)] for fact in facts[base])])
    print("\nLoad time: dlopen in a new process, its dependencies loaded; medians of", LOADS)
    rows = [["", *names]]
    for mode, label in [("lazy", "lazy"), ("bound", "all symbols bound")]:
        rows.append([f"{label}, us", *(f"{times[name, mode][0]:.0f}" for name in names)])
        rows.append([f"{label}, page faults", *(f"{times[name, mode][1]:.0f}" for name in names)])
    rows.append([f"all bound, relative to {base}",
                 *(f"{times[name, 'bound'][0] / times[base, 'bound'][0]:.2f}" for name in names)])
    rows.append([f"stripped file, relative to {base}", *(
        f"{facts[name]['stripped file'] / facts[base]['stripped file']:.2f}" for name in names)])
    table(rows)
    print("\nMemory of each message in bytes: object, empty; heap beside it, every field filled")
    print(run(bench / "virtual-modem-message-memory"), end="")


if __name__ == "__main__":
    main()
