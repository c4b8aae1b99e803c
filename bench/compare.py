#!/usr/bin/python3
"""Runs the benchmark of every build of the library side by side and prints the ratios between them.

Usage: compare.py SOURCE_DIR OUTPUT_DIR MINUTES

A round is PASSES passes; in a pass every build runs once, in random order, in a process of its own
and from a fresh copy of its libraries, so that neither the state of the machine nor the pages that
code happened to land on favour one of them. A cell's time in a round is the least of its passes:
what shares the machine, another guest of its host for one, can only add, up to double, for seconds
at a time. A round gives one ratio per build and cell; the table has the medians over the rounds and,
of geometric means, the quartiles. Times are of the processor, not of the clock on the wall, which
other processes stretch. Instructions are counted once by callgrind: they repeat exactly.
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

MESSAGES = ["NoResultResponse", "Dial", "GetCurrentCallsResponse", "SignalStrengthChanged",
            "SlaveSetupDataCallResponse", "IccCardStatusResponse", "ImsCallStateChanged"]
FOUR = MESSAGES[:4]
OPERATIONS = ["encode", "decode_reused", "decode_fresh", "round_trip", "arena_reused"]
THREE = OPERATIONS[:3]
PASSES = 5


@dataclasses.dataclass(frozen=True)
class Build:
    name: str
    preset: str
    program: str
    codec: str = "library"


BUILDS = [
    Build("plain", "release", "plain"),  # the first is what all others are compared with
    Build("plain, caller with NDEBUG", "release", "plain-library"),
    Build("release", "release", "release"),
    Build("release, clang", "release-clang", "release"),
    Build("release, runtime from source", "release-source-runtime", "release"),
    Build("full runtime, plain", "release", "full"),
]
BASE = BUILDS[0].name
# Messages as text; the first is what the second is compared with.
TEXT = [Build("full runtime", "release", "text-full", "text"),
        Build("companion library", "release", "text-release", "text")]


class Runner:
    def __init__(self, source: pathlib.Path, scratch: pathlib.Path):
        self.source = source
        self.scratch = scratch

    def folder(self, build: Build) -> pathlib.Path:
        return self.source / "build" / build.preset / "bench"

    def environment(self, build: Build) -> dict[str, str]:
        """With a fresh copy of the build's libraries in front of all others."""
        copies = self.scratch / f"{build.preset}-{build.program}"
        shutil.rmtree(copies, ignore_errors=True)
        copies.mkdir()
        program = self.folder(build) / f"virtual-modem-bench-{build.program}"
        linked = subprocess.run(["ldd", program], check=True, capture_output=True, text=True).stdout
        for library in re.findall(r"=> (\S+)", linked):
            if library.startswith(str(self.source)):
                shutil.copy(library, copies)
        return {**os.environ, "LD_LIBRARY_PATH": str(copies)}

    def benchmarks(self, build: Build, pattern: str, seconds: float) -> dict[str, float]:
        """Processor time of each benchmark that matches, in nanoseconds."""
        out = subprocess.run(
            [self.folder(build) / f"virtual-modem-bench-{build.program}",
             f"--benchmark_filter={pattern}", f"--benchmark_min_time={seconds}",
             "--benchmark_format=json"],
            check=True, stdout=subprocess.PIPE, stderr=subprocess.DEVNULL,
            env=self.environment(build)).stdout
        return {run["name"]: run["cpu_time"] for run in json.loads(out)["benchmarks"]}

    def instructions(self, build: Build) -> dict[str, float]:
        """Instructions of one execution of each operation."""
        pattern = f"^{build.codec}/"
        folder = self.scratch / "callgrind"
        shutil.rmtree(folder, ignore_errors=True)
        folder.mkdir()
        subprocess.run(
            ["valgrind", "--tool=callgrind", "--collect-atstart=no",
             f"--callgrind-out-file={folder}/out",
             self.folder(build) / f"virtual-modem-bench-{build.program}", "--instructions", pattern],
            check=True, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL,
            env=self.environment(build))
        counts = {}
        for dump in folder.iterdir():
            text = dump.read_text()
            name = re.search(r"Trigger: Client Request: (\S+)", text)
            total = re.search(r"^(?:summary|totals): (\d+)", text, re.MULTILINE)
            if name and total:
                counts[cell(name[1])] = int(total[1]) / 100  # executions in one dump
        return counts


def cell(name: str) -> str:
    """"library/Dial/encode" -> "Dial/encode"."""
    return name.split("/", 1)[1]


def geometric_mean(values) -> float:
    return statistics.geometric_mean(list(values))


def cells(messages: list[str], operations: list[str]) -> list[str]:
    return [f"{message}/{operation}" for message in messages for operation in operations]


def ratios(times: dict, build: str, wanted: list[str]) -> list[float]:
    """Geometric mean over the cells of the ratio to the base, one for each round."""
    return [geometric_mean(mine[name] / base[name] for name in wanted)
            for mine, base in zip(times[build], times[BASE])]


def spread(values: list[float]) -> str:
    if len(values) < 2:
        return f"{values[0]:.2f}"
    low, middle, high = statistics.quantiles(values, n=4, method="inclusive")
    return f"{middle:.2f} [{low:.2f} {high:.2f}]"


def table(title: str, heads: list[str], rows: list[list[str]]) -> None:
    print(f"\n{title}")
    widths = [max(len(row[i]) for row in [heads, *rows]) for i in range(len(heads))]
    for row in [heads, *rows]:
        first, *rest = row
        line = [first.ljust(widths[0])] + [text.rjust(w) for text, w in zip(rest, widths[1:])]
        print("  ".join(line).rstrip())


def report(results: dict) -> None:
    times, counts = results["times"], results["instructions"]
    builds = [build.name for build in BUILDS]
    for messages, title in [(FOUR, "the four messages"), (MESSAGES, "all seven messages")]:
        rows = [[build] + [spread(ratios(times, build, cells(messages, ops)))
                           for ops in [THREE, *([op] for op in OPERATIONS)]] for build in builds]
        table(f"Time relative to the plain build, geometric mean over {title}: median [quartiles] "
              f"of {len(times[BASE])} rounds", ["build", "encode+decode", *OPERATIONS], rows)

    rows = [[build, *(
        f"{geometric_mean(counts[build][c] / counts[BASE][c] for c in cells(messages, THREE)):.2f}"
        for messages in (FOUR, MESSAGES))] for build in builds]
    table("Instructions of encode+decode relative to the plain build",
          ["build", "four messages", "all seven"], rows)

    full, ours = (results["text"][build.name] for build in TEXT)
    rows = []
    for name in MESSAGES:
        rows.append([name, *(f"{statistics.median(run[name] for run in runs):.0f}"
                             for runs in (full, ours)),
                     spread([mine[name] / theirs[name] for mine, theirs in zip(ours, full)])])
    rows.append(["geometric mean", "", "", spread(
        [geometric_mean(mine[name] / theirs[name] for name in MESSAGES)
         for mine, theirs in zip(ours, full)])])
    table("A message as one line of text", ["message", *(f"{build.name}, ns" for build in TEXT),
                                            "ratio: median [quartiles]"], rows)

    def least(name: str) -> float:
        return min(round_[name] for round_ in results["release"])

    groups = collections.defaultdict(list)
    for name in results["release"][0]:
        topic, way, message = name.split("/")[1:]
        groups[topic, message].append((way, least(name)))
    rows = [[topic, message, way, f"{ns:.0f}", f"{ns / ways[0][1]:.2f}"]
            for (topic, message), ways in groups.items() for way, ns in ways]
    table("Release build, ways to do the same thing; the factor is to the first way",
          ["topic", "message", "way", "ns", "factor"], rows)


def main() -> None:
    source, output, minutes = pathlib.Path(sys.argv[1]), pathlib.Path(sys.argv[2]), float(sys.argv[3])
    deadline = time.monotonic() + 60 * minutes
    results = {"times": collections.defaultdict(list), "instructions": {},
               "release": [], "text": collections.defaultdict(list)}
    with tempfile.TemporaryDirectory() as scratch:
        runner = Runner(source, pathlib.Path(scratch))
        for build in BUILDS:
            results["instructions"][build.name] = runner.instructions(build)
        rounds = 0
        while rounds < 3 or time.monotonic() < deadline:
            passes = collections.defaultdict(list)
            texts = collections.defaultdict(list)
            for build in (b for _ in range(PASSES) for b in random.sample(TEXT, len(TEXT))):
                times = runner.benchmarks(build, "^text/", 0.005)
                texts[build.name].append({cell(n): ns for n, ns in times.items()})
            for name, runs in texts.items():
                results["text"][name].append({c: min(run[c] for run in runs) for c in runs[0]})
            for build in (b for _ in range(PASSES) for b in random.sample(BUILDS, len(BUILDS))):
                times = runner.benchmarks(build, f"^{build.codec}/", 0.005)
                passes[build.name].append({cell(n): ns for n, ns in times.items()})
            for name, runs in passes.items():
                results["times"][name].append({c: min(run[c] for run in runs) for c in runs[0]})
            results["release"].append(runner.benchmarks(BUILDS[2], "^advice/", 0.01))
            rounds += 1
            print(f"\rround {rounds}", end="", file=sys.stderr, flush=True)
    print(file=sys.stderr)
    results["conditions"] = {
        "rounds": rounds, "processors": os.cpu_count(), "load": os.getloadavg(),
        "processor": re.search("model name.*: (.*)", pathlib.Path("/proc/cpuinfo").read_text())[1]}
    output.mkdir(parents=True, exist_ok=True)
    (output / "results.json").write_text(json.dumps(results, indent=1), encoding="ascii")
    print(f"{results['conditions']['processor']}, {os.cpu_count()} processors, {rounds} rounds, "
          f"load average {os.getloadavg()[0]:.1f}")
    report(results)
    print(f"\nRaw results: {output}/results.json")


if __name__ == "__main__":
    main()
