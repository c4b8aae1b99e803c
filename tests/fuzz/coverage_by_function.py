#!/usr/bin/python3
"""Sums up llvm-cov's export by member function of the generated classes: regions reached of all.

Usage: coverage_by_function.py EXPORT_JSON
"""
import collections
import json
import re
import sys

FUNCTIONS = ("_InternalParse", "_InternalSerialize", "ByteSizeLong", "MergeFrom",
             "Clear", "InternalSwap", "IsInitialized")


def main() -> None:
    with open(sys.argv[1], encoding="utf-8") as stream:
        functions = json.load(stream)["data"][0]["functions"]
    reached, total = collections.Counter(), collections.Counter()
    for function in functions:
        # Itanium mangling ends a member's name with its length and itself: ...13MergeFromERKS_
        name = next((n for n in FUNCTIONS if re.search(f"{len(n)}{n}E", function["name"])), None)
        if name and any(f.endswith(".pb.cc") for f in function["filenames"]):
            code = [region for region in function["regions"] if region[7] == 0]
            total[name] += len(code)
            reached[name] += sum(region[4] > 0 for region in code)
    for name in FUNCTIONS:
        if total[name]:
            print(f"{name:<20} {reached[name]:>6} of {total[name]:>6} regions "
                  f"({100 * reached[name] / total[name]:.1f} %)")


if __name__ == "__main__":
    main()
