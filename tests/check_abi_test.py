#!/usr/bin/python3
"""Changes a small library of messages and of classes, and asks scripts/check-abi what it thinks of it.

Usage: check_abi_test.py COMPILER INCLUDE_FOLDERS     (needs protoc, or PROTOC in the environment)

INCLUDE_FOLDERS are those of the runtime, separated by semicolons. Skipped where abidw is missing.
"""
import os
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile
import unittest

ROOT = pathlib.Path(__file__).resolve().parent.parent

SCHEMA = """syntax = "proto2";
option optimize_for = LITE_RUNTIME;
message Grown { required int32 number = 1; }
message Reordered { optional int32 first = 1; optional int32 second = 2; }
message Full { %s }
message Kept { optional string text = 1; repeated Grown grown = 2; }
""" % " ".join(f"optional int32 f{number} = {number};" for number in range(1, 33))

HEADER = """namespace virtual_modem {
enum class Mode : unsigned char { kShort = 1, kLong = 2 };
struct Options { bool masked; int limit; };
struct Worker {
  virtual ~Worker();
  virtual void Start();
  virtual void Stop();
  const char* Work(const Options&, Mode) const;
  int Count() const;
 private:
  int count_;
};
}
extern "C" int Plain(int);
"""
SOURCE = """#include "virtual_modem/worker.h"
namespace virtual_modem {
Worker::~Worker() {}
void Worker::Start() {}
void Worker::Stop() {}
const char* Worker::Work(const Options&, Mode) const { return {}; }
int Worker::Count() const { return count_; }
}
int Plain(int value) { return value; }
"""


def changed(text: str, *replacements: tuple[str, str]) -> str:
    for old, new in replacements:
        assert text.count(old) == 1, f"{old} has to stand once"
        text = text.replace(old, new)
    return text


class CheckAbi(unittest.TestCase):
    def setUp(self):
        scratch = tempfile.TemporaryDirectory()
        self.addCleanup(scratch.cleanup)
        self.scratch = pathlib.Path(scratch.name)
        self.released = self.scratch / "released_abi.txt"

    def compile(self, folder: str, header: str, source: str) -> pathlib.Path:
        """A library of one source, whose public header stands in a folder as that of the project."""
        place = self.scratch / folder / "virtual_modem"
        place.mkdir(parents=True)
        (place / "worker.h").write_text(header, encoding="utf-8")
        (place / "worker.cc").write_text(source, encoding="utf-8")
        return self.link(place / "worker.cc")

    def compile_schema(self, folder: str, schema: str) -> pathlib.Path:
        place = self.scratch / folder / "virtual_modem"
        place.mkdir(parents=True)
        (place / "sample.proto").write_text(schema, encoding="utf-8")
        protoc = os.environ.get("PROTOC", "protoc")
        subprocess.run([protoc, "--cpp_out=.", "virtual_modem/sample.proto"], cwd=place.parent,
                       check=True)
        return self.link(place / "sample.pb.cc")

    def link(self, source: pathlib.Path) -> pathlib.Path:
        library = source.with_suffix(".so")
        folders = [f"-I{folder}" for folder in [source.parent.parent, *INCLUDE_FOLDERS]]
        subprocess.run([COMPILER, "-std=c++17", "-g", "-fPIC", "-shared", *folders, source,
                        "-o", library], check=True)
        return library

    def check(self, library: pathlib.Path, *options: str) -> tuple[int, str]:
        result = subprocess.run(
            [ROOT / "scripts/check-abi", f"--released={self.released}", *options, library],
            capture_output=True, text=True, check=False)
        self.assertEqual(bool(result.stderr), result.returncode != 0)
        words = result.stdout + result.stderr
        print(words, end="")
        return result.returncode, words

    def accept(self, library: pathlib.Path) -> None:
        self.assertEqual(self.check(library, "--accept", "--version=1.2.0")[0], 0)

    def test_messages(self):
        self.accept(self.compile_schema("released", SCHEMA))
        library = self.compile_schema("now", changed(
            SCHEMA, ("int32 number = 1;", "int32 number = 1; optional string word = 2;"),
            ("optional int32 first = 1; optional int32 second = 2;",
             "optional int32 second = 1; optional int32 first = 2;"),
            (" }\nmessage Kept", " optional int32 f33 = 33; }\nmessage Added {}\nmessage Kept")))
        status, words = self.check(library, "--version=1.2.1")
        self.assertEqual(status, 1)
        self.assertEqual(re.findall(r"(\w+) changed its layout: every caller that holds one must be "
                                    "compiled again", words), ["Full", "Grown", "Reordered"])
        for line in ["size: 32 bytes became 40 bytes",
                     "  word_ was added: byte 24, pb::internal::ArenaStringPtr",
                     "at another place: number_\n",
                     "at another place: first_, second_\n",
                     "_has_bits_: byte 16, pb::internal::HasBits<1> became byte 16, "
                     "pb::internal::HasBits<2>",
                     "class Added was added",
                     "version 1.2.1 has to keep the layout of 1.2.0: undo this, or make the version "
                     "1.3.0"]:
            self.assertIn(line, words)
        self.assertEqual(self.check(library, "--version=1.3.0")[0], 0)

    def test_classes(self):
        library = self.compile("released", HEADER, SOURCE)
        self.accept(library)
        self.assertEqual(self.check(library, "--version=1.2.1")[0], 0)
        count = ("int Worker::Count() const { return count_; }\n", "")
        for name, patch, minor, words, header, source in [
                ("member", 1, 0, "Options changed its layout",
                 [("int limit;", "int limit; long more;")], []),
                ("virtual", 1, 0, "3 Stop became -1 ~Worker, 2 Stop, 3 Start",
                 [("virtual void Start();\n  virtual void Stop();",
                   "virtual void Stop();\n  virtual void Start();")], []),
                ("renamed", 1, 1, "member virtual_modem::Options.limit is gone",
                 [("int limit;", "int maximum;")], []),
                ("method", 1, 1, "function virtual_modem::Worker::Count() const is gone",
                 [("int Count() const;", "")], [count]),
                ("parameter", 1, 1, "function virtual_modem::Worker::Work("
                 "virtual_modem::Options const&, virtual_modem::Mode) const is gone",
                 [("Options&, Mode)", "Options&)")], [("Options&, Mode)", "Options&)")]),
                ("return", 1, 1, "Count() const returned int, and returns long",
                 [("int Count", "long Count")], [("int Worker::Count", "long Worker::Count")]),
                ("plain", 1, 1, "function Plain() is gone", [("int Plain(int);", "")],
                 [("int Plain(int value) { return value; }", "")]),
                ("value", 1, 1, "value virtual_modem::Mode::kLong was 2, and is 3",
                 [("kLong = 2", "kLong = 3")], []),
                ("added", 0, 0, "function virtual_modem::Added() was added",
                 [("enum class", "void Added();\nenum class"), ("kLong = 2", "kLong = 2, kNone = 0")],
                 [("Worker::~", "void Added() {}\nWorker::~")]),
        ]:
            with self.subTest(name):
                library = self.compile(name, changed(HEADER, *header), changed(SOURCE, *source))
                for version, expected in [("1.2.1", patch), ("1.3.0", minor)]:
                    status, told = self.check(library, f"--version={version}")
                    self.assertEqual(status, expected)
                    self.assertIn(words, told)
                if name == "member":
                    self.assertEqual(self.check(library, "--version=1.1.9")[0], 1)

    def test_what_cannot_be_compared(self):
        library = self.compile("released", HEADER, SOURCE)
        self.assertIn("--accept writes it", self.refused(library))
        self.accept(library)
        text = self.released.read_text(encoding="utf-8")
        bare = self.scratch / "bare.so"
        shutil.copy(library, bare)
        subprocess.run(["strip", "--strip-debug", bare], check=True)
        self.assertIn("no debug information", self.refused(bare))
        self.assertIn("missing", self.refused(self.scratch / "none.so"))
        for words, damaged in [
                ("cut short", text[:-4]),
                ("cut short", ""),
                ("line 5 is damaged", text.replace("\nclass", "\n<<<<<<< ours\nclass", 1)),
                ("may lay out classes differently", re.sub("built .*", "built elf-arm g++ 12", text)),
        ]:
            self.released.write_text(damaged, encoding="utf-8")
            self.assertIn(words, self.refused(library))

    def refused(self, library: pathlib.Path) -> str:
        status, words = self.check(library)
        self.assertEqual(status, 2)
        return words


if __name__ == "__main__":
    if not shutil.which("abidw"):
        print("check_abi_test: skipped, abidw is missing: scripts/setup abi")
        sys.exit(77)
    COMPILER, INCLUDE_FOLDERS = sys.argv[1], list(filter(None, sys.argv[2].split(";")))
    unittest.main(argv=sys.argv[:1])
