#!/usr/bin/python3
"""Holds a library to what its compiler and linker flags are for.

Usage: check_link.py LIBRARY SONAME [--packed] [--no-stubs] [--nothing-at-start] [--nothing-at-exit]
    [--no-exceptions]

The options name what holds of some builds or libraries only: relocations are packed, no call goes
through a stub, no static initializer runs, no destructor is left for the end of the process, no
exception passes through, as one does else.
"""
import argparse
import re
import subprocess
import sys


def readelf(option: str, library: str) -> str:
    return subprocess.run(["readelf", "--wide", option, library], check=True, capture_output=True,
                          text=True).stdout


def main() -> None:
    parser = argparse.ArgumentParser(usage=__doc__)
    parser.add_argument("library")
    parser.add_argument("soname")
    for flag in ("--packed", "--no-stubs", "--nothing-at-start", "--nothing-at-exit",
                 "--no-exceptions"):
        parser.add_argument(flag, action="store_true")
    # CMake hands on, from 3.31, an empty word for an option that the build does not have.
    options = parser.parse_args(list(filter(None, sys.argv[1:])))
    dynamic = readelf("--dynamic", options.library)
    segments = readelf("--segments", options.library)
    tags = set(re.findall(r"^ *0x\w+ \((\w+)\)", dynamic, re.MULTILINE))
    symbols = [line.split() for line in readelf("--dyn-syms", options.library).splitlines()]
    symbols = [words for words in symbols if len(words) > 7 and words[0][:-1].isdigit()]
    functions = {words[7].partition("@")[0] for words in symbols
                 if words[3] == "FUNC" and words[6] != "UND"}
    undefined = {words[7].partition("@")[0] for words in symbols if words[6] == "UND"}
    slots = [(words[2], words[4].partition("@")[0])
             for words in map(str.split, readelf("--relocs", options.library).splitlines())
             if len(words) > 4 and re.search("GLOB_DAT|JUMP_SLO", words[2])]

    faults = []

    def expect(holds: bool, fault: str) -> None:
        if not holds:
            faults.append(fault)

    expect(f"soname: [{options.soname}]" in dynamic, f"the SONAME is not {options.soname}")
    expect("GNU_RELRO" in segments, "the table of addresses stays writable")
    expect("BIND_NOW" in dynamic, "symbols are not bound at load")
    expect(re.search(r"GNU_STACK .* RW +0", segments) is not None, "the stack is executable")
    expect("TEXTREL" not in tags, "text relocations")
    expect("GNU_HASH" in tags and "HASH" not in tags, "not the GNU hash table alone")
    expect(bool(slots), "no address is taken from another library: readelf is not understood")
    # Functions alone: an executable may hold default instances in copies of its own, and the library
    # has to use those too.
    own = {words[7] for words in symbols if words[6] != "UND" and words[7].endswith("_default_instance_")}
    expect("SYMBOLIC" not in tags and (not own or not own.isdisjoint(name for _, name in slots)),
           "data is bound inside the library")
    faults += [f"looked up in other libraries first: {name}" for _, name in slots if name in functions]
    if options.packed:
        expect("RELR" in tags, "relocations are not packed")
    if options.no_stubs:
        faults += [f"called through a stub: {name}" for kind, name in slots if "JUMP_SLO" in kind]
    if options.nothing_at_start:  # One entry is the compiler's own start code.
        size = re.search(r"\(INIT_ARRAYSZ\) +(\d+)", dynamic)
        expect(size is None or int(size[1]) <= 8, "static initializers run")
    if options.nothing_at_exit:
        expect("__cxa_atexit" not in undefined, "something is left to do at exit")
    expect(options.no_exceptions == ("__gxx_personality_v0" not in undefined),
           "exceptions pass through it" if options.no_exceptions else "exceptions leak or end the process")
    # The first to ask for the names of an enumeration may be several threads.
    expect(not own or "__cxa_guard_acquire" in undefined, "statics are initialized without a lock")
    print("\n".join(faults) or f"{len(slots)} addresses of other libraries, all bound at load")
    sys.exit(1 if faults else 0)


if __name__ == "__main__":
    main()
