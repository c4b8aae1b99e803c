#!/usr/bin/python3
"""Reads Android.bp as the platform's build does, as far as these modules go, and holds it to the CMake
builds: the same sources, flags and made files, and headers that are found by what a module names.

Usage: android_bp_test.py HOST_BUILD ANDROID_BUILD
"""
import json
import pathlib
import re
import shlex
import subprocess
import sys
import tempfile
import unittest

ROOT = pathlib.Path(__file__).resolve().parents[2]
HOST, ANDROID = (pathlib.Path(path).resolve() for path in sys.argv[1:3])
RUNTIME = "libprotobuf-cpp-lite"
# What the platform gives every module.
PLATFORM_FLAGS = ["-fno-exceptions", "-fno-rtti"]
# Made files as the CMake build makes them.
MADE = {
    "virtual-modem-protos-descriptor-set": "share/virtual-modem-protos/virtual-modem-protos.binpb",
    "virtual-modem-text-tables": "src/text/tables.cc",
    "virtual-modem-message-list": "list/virtual_modem/message_list.h",
}
# Modules, each with the CMake targets of the same sources.
TARGETS = {
    "libvirtual-modem-text": ["virtual-modem-text"],
    "virtual-modem-call-exchange": ["virtual-modem-exchange", "call_exchange"],
    "virtual-modem-integration-client": ["integration_client"],
}


def parse(text: str) -> list[dict]:
    """The modules, each with its "kind"."""
    tokens = re.findall(r'"(?:[^"\\]|\\.)*"|\w+|[][{}:,+]', re.sub(r"(?m)^\s*//.*", "", text))

    def value():
        token = tokens.pop(0)
        if token == "[":
            result = []
            while tokens[0] != "]":
                result.append(value())
                tokens[:1] = [] if tokens[0] == "," else tokens[:1]
            tokens.pop(0)
        elif token == "{":
            result = {}
            while tokens[0] != "}":
                name = tokens.pop(0)
                assert tokens.pop(0) == ":"
                result[name] = value()
                tokens[:1] = [] if tokens[0] == "," else tokens[:1]
            tokens.pop(0)
        else:
            result = {"true": True, "false": False}[token] if token[0] != '"' else json.loads(token)
        if tokens and tokens[0] == "+":
            tokens.pop(0)
            result += value()
        return result
    modules = []
    while tokens:
        kind = tokens.pop(0)
        modules.append({"kind": kind, **value()})
    return modules


def with_defaults(module: dict, modules: dict[str, dict]) -> dict:
    result: dict = {}
    for part in [*(modules[name] for name in module.get("defaults", [])), module]:
        for name, value in part.items():
            result[name] = result.get(name, []) + value if isinstance(value, list) else value
    return result


MODULES = {module["name"]: module for module in parse((ROOT / "Android.bp").read_text("utf-8"))
           if "name" in module}
MODULES = {name: with_defaults(module, MODULES) for name, module in MODULES.items()}
CODE = {name: module for name, module in MODULES.items()
        if module["kind"] in ("cc_library_shared", "cc_binary")}


def sources(name: str) -> list[str]:
    """The files of a module, modules among its sources replaced by what they make."""
    result = []
    for pattern in MODULES[name]["srcs"]:
        if pattern[1:] in MADE:
            result.append(str(HOST / MADE[pattern[1:]]))
        elif pattern[0] == ":":
            result += sources(pattern[1:])
        else:
            result += sorted(str(path.relative_to(ROOT)) for path in ROOT.glob(pattern))
    return result


def include_folders(name: str, outside: bool = False) -> list[str]:
    """Where a module's own sources look for headers, or those of a module that uses it."""
    module = MODULES[name]
    folders = module.get("export_include_dirs", [])
    if module.get("proto", {}).get("export_proto_headers"):
        folders = [*folders, str(HOST / "include")]
    kept = "export_generated_headers" if outside else "generated_headers"
    folders = folders + [str(HOST / "list") for _ in module.get(kept, [])]
    if not outside:
        folders = folders + module.get("local_include_dirs", [])
    used = module.get("export_shared_lib_headers" if outside else "shared_libs", [])
    return folders + [f for library in used if library in CODE for f in include_folders(library, True)]


def flags(name: str) -> list[str]:
    module = MODULES[name]
    words = [word for flag in module["cflags"] + module.get("cppflags", []) for word in flag.split()]
    return [*PLATFORM_FLAGS, f"-std={module['cpp_std']}", *words,
            *(f"-I{folder}" for folder in include_folders(name))]


def commands(build: pathlib.Path, target: str) -> dict[str, list[str]]:
    """How CMake compiles the sources of a target."""
    entries = json.loads((build / "compile_commands.json").read_text("utf-8"))
    return {str(pathlib.Path(entry["file"])): shlex.split(entry["command"]) for entry in entries
            if f"/{target}.dir/" in entry["command"]}


class AndroidBp(unittest.TestCase):
    def test_made_files_are_those_of_the_other_build(self):
        for name, path in MADE.items():
            module = MODULES[name]

            def tool(match, names=tuple(module["tools"])):
                named = MODULES.get(match[1] or names[0])
                modules = MODULES["virtual-modem-schema-reader"]["path"]
                return (f"PYTHONPATH={modules} {sys.executable} -B {named['main']}" if named
                        else "protoc")
            with self.subTest(name), tempfile.TemporaryDirectory() as scratch:
                out = pathlib.Path(scratch, module["out"][0])
                out.parent.mkdir(exist_ok=True)
                command = re.sub(r"\$\(location ?([^)]*)\)", tool, module["cmd"])
                words = {"$(in)": " ".join(sources(name)), "$(out)": str(out), "$$": "$"}
                for word, text in words.items():
                    command = command.replace(word, text)
                subprocess.run(["bash", "-euc", command], cwd=ROOT, check=True)
                self.assertEqual(out.read_bytes(), (HOST / path).read_bytes())

    def test_sources_are_those_of_the_other_build(self):
        for name, targets in TARGETS.items():
            built = {file for target in targets for file in commands(HOST, target)}
            self.assertEqual({str(ROOT / file) for file in sources(name)}, built, name)
        units = {pathlib.Path(file).stem for file in sources("lib-virtual-modem-protos")}
        built = {pathlib.Path(file).name.partition(".")[0]
                 for file in commands(HOST, "virtual-modem-protos")}
        self.assertEqual(units, built)

    def test_every_source_finds_its_headers_and_one_of_each_module_compiles(self):
        for name in CODE:
            files = [file for file in sources(name) if file.endswith(".cc")]
            if name == "lib-virtual-modem-protos":
                files = [str(HOST / "src/messages/virtual_modem/call_size.pb.cc")]
            throws = [file for file in files if "throw " in (ROOT / file).read_text("utf-8")]
            with self.subTest(name):
                for how, some in ((["-M", "-o/dev/null"], files),
                                  (["-fsyntax-only"], (throws or files)[:1])):
                    for file in some:
                        subprocess.run(["clang++-19", *how, *flags(name), file], cwd=ROOT, check=True)

    def test_flags_are_those_of_the_other_build(self):
        links = (ANDROID / "build.ninja").read_text("utf-8")
        for name, target in (("lib-virtual-modem-protos", "virtual-modem-protos"),
                             ("libvirtual-modem-text", "virtual-modem-text")):
            wanted = [word for flag in MODULES[name]["cflags"] for word in flag.split()]
            found = commands(ANDROID, target)
            self.assertTrue(found)
            for file, words in found.items():
                self.assertEqual([word for word in wanted if word not in words], [], file)
                for word in words:  # what hides or shows symbols has to be the same
                    if re.match("-fvisibility=|-include", word):
                        self.assertIn(word, wanted, file)
            link = re.search(f"LINKER__{target}_.*\n(?:  .*\n)*?  LINK_FLAGS = (.*)", links)
            for flag in MODULES[name]["ldflags"]:
                self.assertIn(flag, shlex.split(link[1]), name)

    def test_all_modules_stand_where_the_runtime_with_the_release_in_its_name_does(self):
        for name, module in CODE.items():
            with self.subTest(name):
                self.assertEqual((module.get("vendor"), module.get("compile_multilib")), (True, "32"))
                self.assertIn(RUNTIME, module["shared_libs"])
                for made in module.get("generated_headers", []):
                    self.assertTrue(MODULES[made].get("vendor"), made)
        library = CODE["lib-virtual-modem-protos"]
        # Without the one the full runtime is wanted, without the other headers land in other folders.
        self.assertEqual((library["proto"]["type"], library["proto"]["canonical_path_from_root"]),
                         ("lite", False))
        self.assertEqual(MODULES["virtual-modem-protos-schema"]["path"], "proto")
        self.assertIn(RUNTIME, library["export_shared_lib_headers"])


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1] + sys.argv[3:])
