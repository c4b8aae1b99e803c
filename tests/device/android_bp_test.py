#!/usr/bin/python3
"""Holds what Android.bp means to the CMake builds: sources, generated files and headers.

Usage: android_bp_test.py HOST_BUILD
"""
import json
import os
import re
import shlex
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

ROOT, HOST = Path(__file__).resolve().parents[2], Path(sys.argv[1]).resolve()
GENERATED = {
    "virtual-modem-protos-descriptor-set": "share/virtual-modem-protos/virtual-modem-protos.binpb",
    "virtual-modem-text-tables": "src/text/tables.cc",
    "virtual-modem-message-list": "list/virtual_modem/message_list.h"}
TARGETS = {"libvirtual-modem-text": ["virtual-modem-text"],
           "virtual-modem-call-exchange": ["virtual-modem-exchange", "call_exchange"],
           "virtual-modem-integration-client": ["integration_client"]}


def read_modules() -> dict[str, dict]:
    """By name, each with its "kind" and its defaults applied. bpfmt keeps the file in this form."""
    text = re.sub(r"(?m)^\s*//.*", "", (ROOT / "Android.bp").read_text("utf-8"))
    for pattern, json_text in ((r'"\s*\+\s*"', ""), (r"(?m)^(\w+) {", r'{"kind": "\1",'),
                               (r"(?m)^(\s+)(\w+):", r'\1"\2":'), (r",(\s*[]}])", r"\1"),
                               (r"\n}", "\n},")):
        text = re.sub(pattern, json_text, text)
    found: dict[str, dict] = {}
    for module in json.loads(f"[{text.rstrip().rstrip(',')}]"):
        for key, value in found.get(*module.get("defaults", ["none"]), {}).items():
            own = module.get(key, [])
            module[key] = value + own if isinstance(value, list) else own or value
        found[module.get("name", "")] = module
    return found


MODULES = read_modules()


def sources(name: str) -> list[str]:
    result = []
    for pattern in MODULES[name]["srcs"]:
        if pattern[1:] in GENERATED:
            result.append(str(HOST / GENERATED[pattern[1:]]))
        else:
            result += sources(pattern[1:]) if pattern[0] == ":" else map(str, ROOT.glob(pattern))
    return result


def headers(name: str, outside: bool = False) -> list[str]:
    """The folders where a module's own sources look for headers, or those of a module that uses it."""
    module, export = MODULES[name], "export_" if outside else ""
    folders = module.get("export_include_dirs", [])
    folders = folders + [folder for folder in module.get("local_include_dirs", []) if not outside]
    folders += [str(HOST / "include") for _ in module.get("proto", {})]
    folders += [str(HOST / "list") for _ in module.get(f"{export}generated_headers", [])]
    used = module.get("export_shared_lib_headers" if outside else "shared_libs", [])
    return folders + [folder for library in used if library in MODULES for folder in headers(library, True)]


class AndroidBp(unittest.TestCase):
    def test_generated_files(self):
        for name, path in GENERATED.items():
            command, *tools = MODULES[name]["cmd"], *MODULES[name]["tools"]
            for tool in tools:
                main = MODULES.get(tool, {}).get("main")
                command = re.sub(rf"\$\(location( {tool})?\)",
                                 f"/usr/bin/python3 -B {main}" if main else "protoc", command)
            with self.subTest(name), tempfile.TemporaryDirectory() as scratch:
                for word, text in (("$(in)", shlex.join(sources(name))),
                                   ("$(out)", f"{scratch}/out"), ("$$", "$")):
                    command = command.replace(word, text)
                subprocess.run(["bash", "-euc", command], cwd=ROOT, check=True,
                               env={**os.environ, "PYTHONPATH": "src"})
                self.assertEqual(Path(scratch, "out").read_bytes(), (HOST / path).read_bytes())

    def test_sources_find_their_headers_and_are_those_of_the_other_build(self):
        commands = json.loads((HOST / "compile_commands.json").read_text("utf-8"))
        for name, targets in TARGETS.items():
            built = {entry["file"]: entry["command"] for entry in commands for target in targets
                     if f"/{target}.dir/" in entry["command"]}
            self.assertEqual(set(sources(name)), set(built))
            hidden = {"-fvisibility=hidden" in command.split() for command in built.values()}
            self.assertEqual({"-fvisibility=hidden" in MODULES[name]["cflags"]}, hidden, name)
            subprocess.run(["clang++-19", "-M", f"-std={MODULES[name]['cpp_std']}", *sources(name),
                            *(f"-I{folder}" for folder in headers(name))],
                           cwd=ROOT, check=True, stdout=subprocess.DEVNULL)

    def test_modules_stand_where_the_runtime_with_the_release_in_its_name_does(self):
        runtime = "libprotobuf-cpp-lite"
        for name, module in MODULES.items():
            if module["kind"] in ("cc_library_shared", "cc_binary"):
                self.assertEqual((module["vendor"], module["compile_multilib"]), (True, "32"), name)
                self.assertIn(runtime, module["shared_libs"])
        library = MODULES["lib-virtual-modem-protos"]
        # Without the one the full runtime is wanted, without the others headers land in other folders.
        self.assertEqual(library["proto"], {"type": "lite", "canonical_path_from_root": False,
                                            "export_proto_headers": True})
        self.assertIn(runtime, library["export_shared_lib_headers"])


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
