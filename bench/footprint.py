#!/usr/bin/python3
"""Prints what the library takes in its file and at load.

Usage: footprint.py NAME=LIBRARY...        the first library is the one to compare with
"""
import ctypes
import os
import pathlib
import random
import re
import resource
import statistics
import subprocess
import sys
import tempfile
import time

SECTIONS = [".text", ".rodata", ".data.rel.ro", ".data", ".bss", ".eh_frame", ".dynsym", ".dynstr",
            ".gnu.hash", ".rela.dyn", ".rela.plt", ".relr.dyn", ".init_array"]
LOADS = 30  # of each library


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


def load(dependency: str, library: str) -> None:
    """Prints microseconds and page faults of dlopen, all symbols bound, in a process of its own."""
    def faults() -> int:
        usage = resource.getrusage(resource.RUSAGE_SELF)
        return usage.ru_minflt + usage.ru_majflt
    ctypes.CDLL(dependency, ctypes.RTLD_GLOBAL)
    dlopen, path = ctypes.CDLL(None).dlopen, library.encode()
    before, start = faults(), time.perf_counter()
    loaded = dlopen(path, os.RTLD_NOW)
    print(1e6 * (time.perf_counter() - start), faults() - before)
    sys.exit(not loaded)


def load_times(libraries: dict[str, pathlib.Path]) -> dict:
    """Microseconds and page faults of dlopen, the libraries that each needs being loaded already."""
    times = {name: [] for name in libraries}
    for name in random.sample(list(libraries) * LOADS, len(libraries) * LOADS):
        runtime = re.search(r"NEEDED.*\[(\S*protobuf\S*)\]", run("readelf", "-d", libraries[name]))[1]
        beside = libraries[name].parent / runtime
        out = run(sys.executable, __file__, "--load", beside if beside.exists() else runtime,
                  libraries[name])
        times[name].append([float(number) for number in out.split()])
    return {name: [statistics.median(column) for column in zip(*runs)] for name, runs in times.items()}


def table(rows: list[list]) -> None:
    rows = [[f"{cell:,}" if isinstance(cell, int) else str(cell) for cell in row] for row in rows]
    widths = [max(map(len, column)) for column in zip(*rows)]
    for first, *rest in rows:
        print("  ".join([first.ljust(widths[0]), *(c.rjust(w) for c, w in zip(rest, widths[1:]))]))


def main() -> None:
    originals = {name: pathlib.Path(path).resolve()
                 for name, path in (argument.split("=", 1) for argument in sys.argv[1:])}
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
        times = load_times(libraries)

    names = list(libraries)
    base = names[0]
    print("Library file: bytes and counts")
    table([["", *names], *([fact, *(facts[name][fact] for name in names)] for fact in facts[base])])
    print("\nLoad time: dlopen in a new process, its dependencies loaded, all symbols bound; medians of", LOADS)
    table([["", *names],
           ["us", *(f"{times[name][0]:.0f}" for name in names)],
           ["page faults", *(f"{times[name][1]:.0f}" for name in names)],
           [f"us, relative to {base}", *(f"{times[name][0] / times[base][0]:.2f}" for name in names)],
           [f"stripped file, relative to {base}", *(
               f"{facts[name]['stripped file'] / facts[base]['stripped file']:.2f}" for name in names)]])


if __name__ == "__main__":
    if sys.argv[1] == "--load":
        load(*sys.argv[2:])
    else:
        main()
