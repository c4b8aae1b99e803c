#!/usr/bin/python3
"""Prints what the library takes in its file and at load.

Usage: footprint.py NAME=LIBRARY...        the first library is the one to compare with
"""
import ctypes
import os
import pathlib
import random
import re
import statistics
import subprocess
import sys
import tempfile
import time

LOADS = 25  # of each library


def run(*command) -> str:
    return subprocess.run(command, check=True, capture_output=True, text=True).stdout


def inspect(stripped: pathlib.Path) -> dict[str, int]:
    """File size, relocations, exports and initializers of a stripped library."""
    relocations = run("readelf", "--wide", "--relocs", stripped)
    initializers = re.search(r"^\.init_array +(\d+)", run("size", "-A", stripped), re.MULTILINE)
    return {
        "stripped file": stripped.stat().st_size,
        "relocations by symbol": len(re.findall(r"\bR_X86_64_(?:64|GLOB_DAT|JUMP_SLO)", relocations)),
        "exported names": len(run("nm", "-D", "--defined-only", stripped).splitlines()),
        "static initializers": int(initializers[1]) // 8 if initializers else 0}


def load(dependency: str, library: str) -> None:
    """Prints the microseconds of dlopen, all symbols bound, in a process of its own."""
    ctypes.CDLL(dependency, ctypes.RTLD_GLOBAL)
    dlopen, path, start = ctypes.CDLL(None).dlopen, library.encode(), time.perf_counter()
    loaded = dlopen(path, os.RTLD_NOW)
    print(1e6 * (time.perf_counter() - start))
    sys.exit(not loaded)


def load_times(libraries: dict[str, pathlib.Path]) -> dict[str, float]:
    """Microseconds of dlopen, the runtime that each library needs being loaded already."""
    times = {name: [] for name in libraries}
    for name in random.sample(list(libraries) * LOADS, len(libraries) * LOADS):
        runtime = re.search(r"NEEDED.*\[(\S*protobuf\S*)\]", run("readelf", "-d", libraries[name]))[1]
        beside = libraries[name].parent / runtime
        times[name].append(float(run(sys.executable, __file__, "--load",
                                     beside if beside.exists() else runtime, libraries[name])))
    return {name: statistics.median(runs) for name, runs in times.items()}


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
    table([["", *names],
           *([fact, *(facts[name][fact] for name in names)] for fact in facts[base]),
           [f"dlopen, all symbols bound, us: median of {LOADS}", *(f"{times[name]:.0f}" for name in names)],
           [f"relative to {base}", *(f"{times[name] / times[base]:.2f}" for name in names)],
           [f"stripped file, relative to {base}", *(
               f"{facts[name]['stripped file'] / facts[base]['stripped file']:.2f}" for name in names)]])


if __name__ == "__main__":
    if sys.argv[1] == "--load":
        load(*sys.argv[2:])
    else:
        main()
