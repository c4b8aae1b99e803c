#!/usr/bin/python3
"""Runs the benchmark of every build of the library side by side and prints the ratios between them.

Usage: compare.py SOURCE_DIR MINUTES

A round is PASSES passes; in a pass every build runs once, in random order, in a process of its own
and from a fresh copy of its libraries, so that neither the state of the machine nor the pages that
code happened to land on favour one of them. A cell's time in a round is the least of its passes:
what shares the machine, another guest of its host for one, can only add, up to double, for seconds
at a time. A round gives one ratio per build and cell; the tables have the medians over the rounds
and, of geometric means, the quartiles. Times are of the processor, not of the clock on the wall,
which other processes stretch. Instructions are counted once by callgrind: they repeat exactly.
"""
import collections
import dataclasses
import json
import os
import pathlib
import random
import re
import shutil
import statistics
import subprocess
import sys
import tempfile
import time

OPERATIONS = ["encode", "decode_reused", "decode_fresh"]
# Of the release build: an operation, and what it is compared with.
ADVICE = [("encode", "encode_fresh"), ("decode_reused", "decode_fresh"),
          ("decode_arena", "decode_fresh"), ("to_array", "to_string"), ("to_buffer", "to_array"),
          ("to_array", "to_ostream")]
PASSES = 5


@dataclasses.dataclass(frozen=True)
class Build:
    name: str
    preset: str
    program: str
    pattern: str = f"^library/.*/({'|'.join(OPERATIONS)})$"


RELEASE = Build("release", "release", "release", "^library/")
BUILDS = [
    Build("plain", "release", "plain"),  # the first is what all others are compared with
    Build("plain, caller with NDEBUG", "release", "plain-library"),
    RELEASE,
    Build("release, clang", "release-clang", "release"),
    Build("release, runtime from source", "release-source-runtime", "release"),
    Build("full runtime, plain", "release", "full"),
]
BASE = BUILDS[0].name
# Messages as text; the first is what the second is compared with.
TEXT = [Build("full runtime", "release", "full", "^text/"),
        Build("companion library", "release", "release", "^text/")]


def run(source: pathlib.Path, build: Build, *options: str, under: tuple = ()) -> str:
    """What the build's benchmark prints."""
    program = source / "build" / build.preset / "bench" / f"virtual-modem-bench-{build.program}"
    linked = subprocess.run(["ldd", program], check=True, capture_output=True, text=True).stdout
    with tempfile.TemporaryDirectory() as copies:
        for library in re.findall(r"=> (\S+)", linked):
            if library.startswith(str(source)):
                shutil.copy(library, copies)
        return subprocess.run(
            [*under, program, *options], check=True, stdout=subprocess.PIPE, stderr=subprocess.DEVNULL,
            text=True, env={**os.environ, "LD_LIBRARY_PATH": copies}).stdout


def cell(name: str) -> str:
    """"library/Dial/encode" -> "Dial/encode"."""
    return name.split("/", 1)[1]


def measure(source: pathlib.Path, builds: list[Build], times: dict) -> None:
    """Adds a round: processor time of each cell, in nanoseconds."""
    passes = collections.defaultdict(list)
    for build in (b for _ in range(PASSES) for b in random.sample(builds, len(builds))):
        out = run(source, build, f"--benchmark_filter={build.pattern}",
                  "--benchmark_min_time=0.005", "--benchmark_format=json")
        passes[build.name].append(
            {cell(each["name"]): each["cpu_time"] for each in json.loads(out)["benchmarks"]})
    for name, runs in passes.items():
        times[name].append({c: min(run[c] for run in runs) for c in runs[0]})


def instructions(source: pathlib.Path, build: Build) -> dict[str, float]:
    """Instructions of one execution of each operation."""
    counts = {}
    with tempfile.TemporaryDirectory() as folder:
        run(source, build, "--instructions", build.pattern,
            under=("valgrind", "--tool=callgrind", "--collect-atstart=no",
                   f"--callgrind-out-file={folder}/out"))
        for dump in pathlib.Path(folder).iterdir():
            text = dump.read_text()
            name = re.search(r"Trigger: Client Request: (\S+)", text)
            total = re.search(r"^(?:summary|totals): (\d+)", text, re.MULTILINE)
            if name and total:
                counts[cell(name[1])] = int(total[1]) / 100  # executions in one dump
    return counts


def ratios(mine: list[dict], base: list[dict], wanted: list[str]) -> list[float]:
    """Geometric mean over the cells of the ratio to the base, one for each round."""
    return [statistics.geometric_mean([a[name] / b[name] for name in wanted])
            for a, b in zip(mine, base)]


def cells(messages: list[str], operations: list[str]) -> list[str]:
    return [f"{message}/{operation}" for message in messages for operation in operations]


def spread(values: list[float]) -> str:
    low, middle, high = statistics.quantiles(values, n=4, method="inclusive")
    return f"{middle:.2f} [{low:.2f} {high:.2f}]"


def table(title: str, *rows: list[str]) -> None:
    print(f"\n{title}")
    widths = [max(map(len, column)) for column in zip(*rows)]
    for first, *rest in rows:
        print("  ".join([first.ljust(widths[0]), *(t.rjust(w) for t, w in zip(rest, widths[1:]))]))


def report(times: dict, counts: dict) -> None:
    full, ours = (times[build.name] for build in TEXT)
    every = list(full[0])
    four = every[:4]
    for messages, title in [(four, "the four messages"), (every, "all seven messages")]:
        table(f"Time relative to the plain build, geometric mean over {title}: median [quartiles] "
              f"of {len(times[BASE])} rounds; instructions of all three",
              ["build", "encode+decode", *OPERATIONS, "instructions"],
              *([build.name,
                 *(spread(ratios(times[build.name], times[BASE], cells(messages, operations)))
                   for operations in [OPERATIONS, *([one] for one in OPERATIONS)]),
                 f"{ratios([counts[build.name]], [counts[BASE]], cells(messages, OPERATIONS))[0]:.2f}"]
                for build in BUILDS))

    table("A message as one line of text",
          ["message", *(f"{build.name}, ns" for build in TEXT), "ratio: median [quartiles]"],
          *([name, *(f"{statistics.median(run[name] for run in runs):.0f}" for runs in (full, ours)),
             spread(ratios(ours, full, [name]))] for name in every),
          ["geometric mean", "", "", spread(ratios(ours, full, every))])

    release = times[RELEASE.name]

    def factor(message: str, way: str, other: str) -> str:
        return f"{statistics.median(r[f'{message}/{way}'] / r[f'{message}/{other}'] for r in release):.2f}"
    table("Release build, one way relative to another: median", ["way", "relative to", *four],
          *([way, other, *(factor(message, way, other) for message in four)] for way, other in ADVICE))


def main() -> None:
    source, minutes = pathlib.Path(sys.argv[1]), float(sys.argv[2])
    deadline = time.monotonic() + 60 * minutes
    counts = {build.name: instructions(source, build) for build in BUILDS}
    times = collections.defaultdict(list)
    while len(times[BASE]) < 3 or time.monotonic() < deadline:
        measure(source, TEXT, times)
        measure(source, BUILDS, times)
        print(f"\rround {len(times[BASE])}", end="", file=sys.stderr, flush=True)
    print(file=sys.stderr)
    processor = re.search("model name.*: (.*)", pathlib.Path("/proc/cpuinfo").read_text())[1]
    print(f"{processor}, {os.cpu_count()} processors, load average {os.getloadavg()[0]:.1f}")
    report(times, counts)


if __name__ == "__main__":
    main()
