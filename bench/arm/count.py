#!/usr/bin/python3
"""Prints how many instructions encoding and decoding take in each build, on 32-bit ARM under qemu.

Usage: count.py PLUGIN BENCH_DIR BUILD=LIBRARY...        the first build is the one to compare with

The figure of an operation is what 1,000 more of it add, so that starting the program cancels out;
that of a build is the geometric mean over the messages. Counts repeat exactly.
"""
import concurrent.futures
import itertools
import os
import statistics
import subprocess
import sys
import tempfile

EMULATOR = ["qemu-arm", "-L", "/usr/arm-linux-gnueabi"]
OPERATIONS = {"encode": "encode", "decode_reused": "decode, object kept",
              "decode_fresh": "decode, new object"}
FEW, MANY = 200, 1200


def run(*command: str) -> tuple[str, str]:
    done = subprocess.run(command, check=True, capture_output=True, text=True)
    return done.stdout.strip(), done.stderr


def stripped_size(library: str) -> int:
    with tempfile.NamedTemporaryFile() as stripped:
        run("llvm-strip-19", "--strip-all", "-o", stripped.name, library)
        return os.path.getsize(stripped.name)


def main() -> None:
    plugin, bench = sys.argv[1:3]
    libraries = dict(argument.split("=", 1) for argument in sys.argv[3:])
    base = next(iter(libraries))

    def program(build: str) -> str:
        return f"{bench}/virtual-modem-operations-{build}"

    def count(job: tuple) -> tuple[str, int]:
        build, cell, times = job
        digest, executed = run(*EMULATOR, "-plugin", plugin, program(build), cell, str(times))
        return digest, int(executed)
    cells = [cell for cell in run(*EMULATOR, program(base))[0].split()
             if cell.partition("/")[2] in OPERATIONS]
    jobs = list(itertools.product(libraries, cells, (FEW, MANY)))
    with concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as pool:
        results = dict(zip(jobs, pool.map(count, jobs)))

    for build, cell, times in jobs:
        if results[build, cell, times][0] != results[base, cell, times][0]:
            sys.exit(f"count.py: {cell} gives another result in the build {build} than in {base}")

    def mean(build: str, operation: str) -> float:
        return statistics.geometric_mean(
            (results[build, cell, MANY][1] - results[build, cell, FEW][1]) / (MANY - FEW)
            for cell in cells if cell.endswith(f"/{operation}"))
    print(f"{'instructions':<10}" + "".join(f"{label:>22}" for label in OPERATIONS.values())
          + f"{'stripped bytes':>18}")
    for build, library in libraries.items():
        row = ""
        for operation in OPERATIONS:
            value = mean(build, operation)
            row += f"{value:>14,.0f}  ({value / mean(base, operation):.3f})"[-22:].rjust(22)
        print(f"{build:<12}{row}{stripped_size(library):>18,}")


if __name__ == "__main__":
    main()
