#!/usr/bin/python3
"""Prints how many instructions encoding and decoding take in each build, on 32-bit ARM under qemu.

Usage: count.py PLUGIN BENCH_DIR BUILD=LIBRARY...        the first build is the one to compare with

The figure of an operation is what 1,000 more of it add, so that starting the program cancels out;
that of a build is the geometric mean over the messages. Counts repeat exactly.
"""
import concurrent.futures
import math
import os
import subprocess
import sys
import tempfile

EMULATOR = ["qemu-arm", "-L", "/usr/arm-linux-gnueabi"]
OPERATIONS = {"encode": "encode", "kept": "decode, object kept", "new": "decode, new object"}
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
    builds = list(libraries)

    def program(build: str) -> str:
        return f"{bench}/virtual-modem-operations-{build}"
    messages = range(int(run(*EMULATOR, program(builds[0]))[0]))
    jobs = [(build, operation, message, times) for build in builds for operation in OPERATIONS
            for message in messages for times in (FEW, MANY)]

    def count(job: tuple) -> tuple[str, int]:
        build, operation, message, times = job
        digest, executed = run(*EMULATOR, "-plugin", plugin, program(build), str(message), operation,
                               str(times))
        return digest, int(executed)
    with concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as pool:
        results = dict(zip(jobs, pool.map(count, jobs)))

    for build, operation, message, times in jobs:
        digests = {results[other, operation, message, times][0] for other in builds}
        if len(digests) > 1:
            sys.exit(f"count.py: {operation} of message {message} gives different results in "
                     f"different builds: {' '.join(sorted(digests))}")

    def mean(build: str, operation: str) -> float:
        counts = [(results[build, operation, message, MANY][1]
                   - results[build, operation, message, FEW][1]) / (MANY - FEW)
                  for message in messages]
        return math.exp(sum(map(math.log, counts)) / len(counts))
    print(f"{'instructions':<10}" + "".join(f"{label:>22}" for label in OPERATIONS.values())
          + f"{'stripped bytes':>18}")
    for build in builds:
        row = ""
        for operation in OPERATIONS:
            value = mean(build, operation)
            row += f"{value:>14,.0f}  ({value / mean(builds[0], operation):.3f})"[-22:].rjust(22)
        print(f"{build:<12}{row}{stripped_size(libraries[build]):>18,}")


if __name__ == "__main__":
    main()
