#!/usr/bin/python3
"""Changes a small library of messages and of classes, and asks scripts/check-abi what it thinks of it.

Usage: check_abi_test.py COMPILER INCLUDE_FOLDERS     (needs protoc, or PROTOC in the environment)

INCLUDE_FOLDERS are those of the runtime, separated by semicolons. Skipped where abidw is missing.
"""
import os
import pathlib
import shutil
import subprocess
import sys
import tempfile
import unittest

CHECK = pathlib.Path(__file__).resolve().parent.parent / "scripts/check-abi"
SCHEMA = """syntax = "proto2";
option optimize_for = LITE_RUNTIME;
enum Tone { LOW = 0; HIGH = 1; }
message Grown { required int32 number = 1; optional Tone tone = 2; }
message Reordered { optional int32 first = 1; optional int32 second = 2; }
"""
SOURCE = """namespace virtual_modem {
enum class Mode : unsigned char { kShort = 1, kLong = 2 };
struct Options { bool masked; int limit; };
struct Worker {
  const char* Work(const Options&, Mode) const;
  int Count() const;
  int count;
};
const char* Worker::Work(const Options&, Mode) const { return {}; }
int Worker::Count() const { return count; }
}
extern "C" int Plain(int value) { return value; }
"""
MESSAGES = [("tone = 2;", "tone = 2; optional string word = 3;"), ("HIGH = 1;", "HIGH = 1; HIGHEST = 2;"),
            ("first = 1; optional int32 second = 2;", "second = 1; optional int32 first = 2;")]
# The status for a patch and for a minor release, words of the report, what is changed.
CHANGES = [
    (0, 0, ["keeps what 1.9.0 promised"], []),
    (0, 0, ["Added"], [("kLong = 2", "kLong = 2, kNone = 0"),
                       ("struct Worker", "void Added() {}\nstruct Worker")]),
    (1, 0, ["Options", "1.9.1 has to undo this or become 1.10.0"],
     [("int limit;", "int limit; long more;")]),
    (1, 1, ["limit"], [("int limit;", "")]),
    (1, 1, ["kLong"], [("kLong = 2", "kLong = 3")]),
    (1, 1, ["from 'int' to 'long int'"], [("int Count", "long Count"),
                                          ("int Worker::Count", "long Worker::Count")]),
    (1, 1, ["Worker::Work", "Plain"], [("Options&, Mode) const;", "Options&) const;"),
                                       ("Options&, Mode) const {", "Options&) const {"),
                                       ('extern "C" int Plain(int value) { return value; }', "")]),
]


class CheckAbi(unittest.TestCase):
    def setUp(self):
        scratch = tempfile.TemporaryDirectory()
        self.addCleanup(scratch.cleanup)
        self.folder = pathlib.Path(scratch.name)

    def library(self, text: str, *replacements: tuple[str, str]) -> pathlib.Path:
        for old, new in replacements:
            self.assertEqual(text.count(old), 1, old)
            text = text.replace(old, new)
        source = "sample.pb.cc" if "syntax" in text else "sample.cc"
        (self.folder / source.replace("pb.cc", "proto")).write_text(text, encoding="utf-8")
        for command in ([os.environ.get("PROTOC", "protoc"), "--cpp_out=.", "sample.proto"],
                        [COMPILER, "-std=c++17", "-g", "-fPIC", "-shared", *INCLUDES, source,
                         "-o", "libsample.so"]):
            if source != "sample.cc" or command[0] == COMPILER:
                subprocess.run(command, cwd=self.folder, check=True)
        return self.folder / "libsample.so"

    def check(self, status: int, words: str, *arguments, **environment: str) -> str:
        result = subprocess.run([CHECK, "--released", self.folder / "released", *arguments], text=True,
                                stdout=subprocess.PIPE, stderr=subprocess.STDOUT, check=False,
                                env={**os.environ, **environment})
        self.assertEqual(result.returncode, status, result.stdout)
        self.assertIn(words, result.stdout)
        return result.stdout

    def test_messages(self):
        self.check(0, "", "--accept", "--version", "1.9.0", self.library(SCHEMA))
        library = self.library(SCHEMA, *MESSAGES)
        report = self.check(1, "'class Grown' changed", "--version", "1.9.1", library)
        self.assertIn("Reordered::Impl_", report)
        self.check(0, "compiled again", "--version", "1.10.0", library)

    def test_classes(self):
        self.check(0, "", "--accept", "--version", "1.9.0", self.library(SOURCE))
        for patch, minor, words, replacements in CHANGES:
            library = self.library(SOURCE, *replacements)
            for version, status in (("1.9.1", patch), ("1.10.0", minor)):
                with self.subTest(words=words, version=version):
                    report = self.check(status, "", "--version", version, library)
                    if version == "1.9.1":
                        self.assertEqual([word for word in words if word not in report], [], report)

    def test_what_cannot_be_compared(self):
        library = self.library(SOURCE)
        self.check(2, "--accept writes it", library)
        self.check(0, "", "--accept", library)
        self.check(2, "is missing", self.folder / "none.so")
        for words, file, damage in (("damaged", "libsample.so.abi.xz", b"<<<<<<< ours"),
                                    ("differently", "release", b"release 1.0.0, compiled by g++ 2\n"),
                                    ("damaged", "release", b"")):
            (self.folder / "released" / file).write_bytes(damage)
            self.check(2, words, library)
        subprocess.run(["strip", "--strip-debug", library], check=True)
        self.check(2, "no debug information", library)
        (self.folder / "cmake").write_text("#!/bin/sh\necho cmake version 9.1\necho Dial.note: decide\n"
                                           "[ $1 = --version ]\n", "utf-8")
        (self.folder / "cmake").chmod(0o755)
        self.check(2, "Dial.note: decide", PATH=f"{self.folder}:{os.environ['PATH']}")


if __name__ == "__main__":
    if not shutil.which("abidw"):
        print("check_abi_test: skipped, abidw is missing: scripts/setup abi")
        sys.exit(77)
    COMPILER, INCLUDES = sys.argv[1], [f"-I{folder}" for folder in sys.argv[2].split(";") if folder]
    unittest.main(argv=sys.argv[:1])
