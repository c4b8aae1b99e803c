#!/usr/bin/python3
"""Checks shape and size of the libraries as built for Android, and prints what they cost.

Usage: check_android.py VARIANT LIBRARY HOST_LIBRARY TEXT_LIBRARY BUDGETS

HOST_LIBRARY is the same library built for the build machine: it must export the same contract.
TEXT_LIBRARY is the companion library.
"""
import re
import subprocess
import sys
import tempfile
from pathlib import Path

NAME = "lib-virtual-modem-protos.so"
NEEDED = ["libprotobuf-cpp-lite-21.12.so", "libc++.so", "libc.so", "libm.so", "libdl.so"]
# Small functions of the runtime, which src/messages/inline_runtime.h is about.
INLINE = r"google::protobuf::(?:internal::(?:Read|ParseContext::|EpsCopyInputStream::)|io::)"
LOADER_PAGE = 16384  # the largest page that a device may have
PAGE = 4096


def run(*command: str) -> str:
    result = subprocess.run(command, check=True, capture_output=True, text=True)
    if result.stderr:
        sys.exit(f"{command[0]} {command[-1]}: {result.stderr}")
    return result.stdout


def section_sizes(library: str) -> dict[str, int]:
    rows = re.findall(r"^ *\[ *\d+\] (\S+) +\S+ +[0-9a-f]+ [0-9a-f]+ ([0-9a-f]+)",
                      run("llvm-readelf-19", "-SW", library), re.MULTILINE)
    return {name: int(size, 16) for name, size in rows}


def exports(library: str) -> set[tuple[str, str]]:
    """The exported names as (kind, name), in a form that does not depend on the target.

    Demangled, since size_t is another letter on 32 bits; without the inline namespace of the C++
    library (std::__1, std::__cxx11) and without g++'s ABI tag. A vtable is V with g++ and D with clang.
    """
    result = set()
    for line in run("llvm-nm-19", "-D", "--defined-only", "--demangle", library).splitlines():
        _, kind, name = line.split(maxsplit=2)
        name = re.sub(r"\[abi:\w+\]", "", re.sub(r"std::__(1|cxx11)::", "std::", name))
        result.add(("D" if kind == "V" else kind, name))
    return result


def contract(names: set[tuple[str, str]]) -> set[tuple[str, str]]:
    # W: template instances of the runtime that the compiler chose not to inline. Every user of one
    # has a copy, so they bind nobody.
    return {(kind, name) for kind, name in names if kind != "W"}


def relocations(library: str) -> list[tuple[int, str]]:
    """Address and kind of each, unpacked."""
    rows = re.findall(r"(?m)^ +0x([0-9A-F]+) (R_ARM_\w+)", run("llvm-readobj-19", "--relocations", library))
    return [(int(address, 16), kind) for address, kind in rows]


def faults_of_loading(library: str) -> list[str]:
    """What would keep Android's loader from loading the library, or a platform from taking it."""
    faults, writable, sealed = [], [], []
    rows = re.findall(r"(?m)^  (\w+) +(0x\w+) (0x\w+) 0x\w+ 0x\w+ (0x\w+) ([R ][W ][E ]) (0x\w+)",
                      run("llvm-readelf-19", "-lW", library))
    for kind, offset, address, size, flags, alignment in rows:
        start, place = int(address, 16), range(int(address, 16), int(address, 16) + int(size, 16))
        if kind == "GNU_RELRO":
            sealed.append(place)
        if kind == "LOAD" and "W" in flags:
            writable.append(place)
        if kind == "LOAD" and (int(alignment, 16) % LOADER_PAGE or (start - int(offset, 16)) % LOADER_PAGE):
            faults.append(f"segment at {address} is not aligned to {LOADER_PAGE} bytes")
        if "E" in flags and ("W" in flags or kind == "GNU_STACK"):
            faults.append(f"{kind} is writable and executable")
    for address, kind in relocations(library):
        if address % 4 or not any(address in place for place in writable):
            faults.append(f"relocation at {address:#x} is not aligned, or outside the writable segments")
        if kind in ("R_ARM_GLOB_DAT", "R_ARM_JUMP_SLOT") and not any(address in place for place in sealed):
            faults.append(f"relocation at {address:#x} is in a table of addresses that stays writable")
    return faults


def faults_of_shape(library: str, soname: str, wanted: list[str]) -> list[str]:
    faults = faults_of_loading(library)

    def expect(holds: bool, fault: str) -> None:
        if not holds:
            faults.append(fault)

    header = run("llvm-readelf-19", "-h", library)
    expect("ELF32" in header and re.search(r"Machine: +ARM", header) is not None, "not ELF32 ARM")
    attributes = run("llvm-readelf-19", "-A", library)
    expect("TagName: FP_arch" in attributes and "TagName: ABI_VFP_args" not in attributes,
           "not softfp: hardware floating point with values in integer registers")
    expect("Description: Thumb-2" in attributes, "not Thumb-2")

    dynamic = run("llvm-readelf-19", "-d", library)
    needed = re.findall(r"NEEDED.*\[(.*)\]", dynamic)
    expect(sorted(needed) == sorted(wanted), f"needs {' '.join(needed)}")
    expect(f"soname: [{soname}]" in dynamic, "wrong SONAME")
    expect("TEXTREL" not in dynamic, "text relocations")
    expect("RPATH" not in dynamic and "RUNPATH" not in dynamic, "a run path")
    expect("ANDROID_REL" in dynamic and "RELRSZ" in dynamic, "relocations are not packed")
    expect("(GNU_HASH)" in dynamic and "(HASH)" not in dynamic, "not the GNU hash table alone")
    expect("BIND_NOW" in dynamic, "symbols are not bound at load")

    symbols = [line.split()[-1] for line in run("llvm-nm-19", "-D", library).splitlines()]
    faults += [f"type information: {name}" for name in symbols if re.match("_ZT[IS]", name)]
    expect("__stack_chk_fail" in symbols, "the stack is not protected")
    expect("Opcodes" in run("llvm-readelf-19", "-u", library), "no table to unwind the stack by")
    expect(not any("personality" in name for name in symbols), "exceptions pass through it")
    inside = run("llvm-nm-19", "--defined-only", "--demangle", library)
    faults += [f"not inline: {name}" for name in set(re.findall(rf"(?m)^\w+ \w ({INLINE}.*)", inside))]
    paths = re.findall(rb"(?:/[\w.+-]{2,}){3,}", Path(library).read_bytes())
    faults += [f"absolute path inside: {path.decode()}" for path in paths]
    return faults


def stripped(library: str, scratch: str) -> str:
    run("llvm-strip-19", "--strip-all", "-o", f"{scratch}/stripped.so", library)
    return f"{scratch}/stripped.so"


def main() -> None:
    variant, library, host_library, text_library, budget_file = sys.argv[1:]
    with tempfile.TemporaryDirectory() as scratch:
        text_library_bytes = Path(stripped(text_library, scratch)).stat().st_size
        file = stripped(library, scratch)
        sizes, relocated = section_sizes(file), relocations(file)
        stripped_bytes = Path(file).stat().st_size
    names, host_names = exports(library), exports(host_library)
    measured = {
        "stripped_bytes": stripped_bytes,
        "text_bytes": sizes[".text"],
        "relocation_bytes": sum(sizes.get(n, 0) for n in (".rel.dyn", ".relr.dyn", ".rel.plt")),
        "exports": len(run("llvm-nm-19", "-D", "--defined-only", library).splitlines()),
        "initializer_bytes": sizes.get(".init_array", 0),
        "dirtied_pages": len({address // PAGE for address, _ in relocated}),
        "text_library_bytes": text_library_bytes,
    }
    budgets = {line.split()[0]: int(line.split()[1])
               for line in Path(budget_file).read_text().splitlines() if not line.startswith("#")}

    faults = faults_of_shape(library, NAME, NEEDED)
    faults += [f"companion library: {fault}" for fault in
               faults_of_shape(text_library, "libvirtual-modem-text.so", [NAME, *NEEDED])]
    for missing in sorted(contract(host_names) - contract(names)):
        faults.append(f"not exported, but on the host: {missing[1]}")
    for surplus in sorted(contract(names) - contract(host_names)):
        faults.append(f"exported, but not on the host: {surplus[1]}")

    print(f"{variant:<24}{'measured':>10}{'budget':>10}")
    for name, budget in budgets.items():
        over = measured[name] > budget
        if over:
            faults.append(f"{name} is {measured[name] - budget} over its budget")
        print(f"{name:<24}{measured[name]:>10,}{budget:>10,}{'  OVER' if over else ''}")
    print(f"{'contract, as on the host':<24}{len(contract(names)):>10,}{len(contract(host_names)):>10,}")
    print("\n".join(faults) if faults else
          "ELF32 ARM softfp, SONAME, five NEEDED, no type information, no text relocation, no absolute "
          f"path, segments,\n{len(relocated):,} relocations: as required",
          file=sys.stderr if faults else sys.stdout)
    sys.exit(1 if faults else 0)


if __name__ == "__main__":
    main()
