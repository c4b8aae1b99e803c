#!/usr/bin/python3
"""Changes a small library of messages and of classes, and asks scripts/check-abi what it thinks of it.

Usage: check_abi_test.py COMPILER     Skipped where abidw is missing.
"""
import os
import pathlib
import shutil
import subprocess
import sys
import tempfile
import unittest

CHECK = pathlib.Path(__file__).resolve().parent.parent / "scripts/check-abi"
# Messages, as far as their layout goes, stand outside of the companion's namespace.
SOURCE = """namespace internal { union Impl { int first; }; }
struct Dial { int Size() const; int second; int third; internal::Impl impl; };
int Dial::Size() const { return second; }
Dial _Dial_default_instance_;
namespace virtual_modem {
enum class Mode : unsigned char { kShort = 1, kLong = 2 };
struct Options { bool masked; int limit; };
union Value { int number; };
int Take(const Value& value) { return value.number; }
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
# The status for a patch and for a minor release, words of the report, what is changed.
CHANGES = [
    (0, 0, ["keeps what 1.9.0 promised"], []),
    (0, 0, ["Added"], [("kLong = 2", "kLong = 2, kNone = 0"),
                       ("struct Worker", "void Added() {}\nstruct Worker")]),
    (1, 0, ["'struct Dial", "'union internal::Impl"],
     [("int second; int third;", "int third; int second; long more;"), ("int first;", "int first; long more;")]),
    (1, 0, ["Options", "1.9.1 has to undo this or become 1.10.0"],
     [("int limit;", "int limit; long more;")]),
    (1, 1, ["limit", "kLong"], [("int limit;", ""), ("kLong = 2", "kLong = 3")]),
    (1, 1, ["union virtual_modem::Value"], [("int number;", "long number;")]),
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

    def library(self, *replacements: tuple[str, str]) -> pathlib.Path:
        text = SOURCE
        for old, new in replacements:
            self.assertEqual(text.count(old), 1, old)
            text = text.replace(old, new)
        subprocess.run([sys.argv[1], "-g", "-fPIC", "-shared", "-x", "c++", "-", "-o", "libsample.so"],
                       input=text.encode(), cwd=self.folder, check=True)
        return self.folder / "libsample.so"

    def check(self, status: int, words: str, *arguments, **environment: str) -> str:
        result = subprocess.run([CHECK, "--released", self.folder / "released", *arguments], text=True,
                                stdout=subprocess.PIPE, stderr=subprocess.STDOUT, check=False,
                                env={**os.environ, **environment})
        self.assertEqual(result.returncode, status, result.stdout)
        self.assertIn(words, result.stdout)
        return result.stdout

    def test_changes(self):
        self.check(0, "", "--accept", "--version", "1.9.0", self.library())
        for patch, minor, words, replacements in CHANGES:
            library = self.library(*replacements)
            with self.subTest(words=words):
                report = self.check(patch, "", "--version", "1.9.1", library)
                self.assertEqual([word for word in words if word not in report], [], report)
                self.check(minor, "", "--version", "1.10.0", library)

    def test_what_cannot_be_compared(self):
        library = self.library()
        self.check(2, "none.so is missing", self.folder / "none.so")
        self.check(2, "--accept writes it", library)
        self.check(0, "", "--accept", library)
        for words, file, damage in (("damaged", "libsample.so.abi.xz", b"<<<<<<< ours"),
                                    ("differently", "release", b"release 1.0.0, compiled by g++ 2\n")):
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
    unittest.main(argv=sys.argv[:1])
