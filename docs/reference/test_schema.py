"""Tests of schema.py: what the pages are made of, and that no comment may be missing.

Needs protoc in $PROTOC or in the path.
"""

import os
import pathlib
import subprocess
import tempfile
import unittest

import schema

COMMENTED = """
// A license line, not the comment of the file.

// Test unit.
syntax = "proto2";
package a.b;

// ---- Kinds ----

// A kind.
enum Kind {
  KIND_NONE = 0;  // None.
  KIND_LEAST = -1;  // Below none.
  KIND_CALL = 11002;  // Above 127.
}

// ---- Messages ----

// Record of something held, carried by Ask. Request is no kind here.
message Held {
  required float level = 1;  // Level.
}

// Request to ask.
// Answered
// by a Reply.
message Ask {
  optional Kind kind = 1;  // Kind.
  repeated Held held = 16;  // Held.
  optional string text = 2048 [default = "-1"];  // Text.
  repeated int32 numbers = 3 [packed = true];  // Numbers.
}

// Response to answer Ask.
message Reply {
  optional string text = 1;  // How it is said is agreed between the sides.
}

// Request without more. Its response is agreed between the sides.
message Order {}
"""


def load(text):
    with tempfile.TemporaryDirectory() as folder:
        pathlib.Path(folder, "test.proto").write_text(text)
        subprocess.run([os.environ.get("PROTOC", "protoc"), "--proto_path=.", "test.proto",
                        "--include_source_info", "--descriptor_set_out=test.binpb"],
                       cwd=folder, check=True)
        return schema.load(pathlib.Path(folder, "test.binpb"))


class Load(unittest.TestCase):
    def setUp(self):
        (self.unit,) = load(COMMENTED)
        self.held, self.ask, self.reply, self.order = self.unit.messages

    def test_sections_follow_the_file(self):
        self.assertEqual([(s.title, [m.name for m in s.members]) for s in self.unit.sections],
                         [("Kinds", ["Kind"]), ("Messages", ["Held", "Ask", "Reply", "Order"])])

    def test_comments_and_kinds(self):
        self.assertEqual(self.unit.comment.strip(), "Test unit.")
        self.assertEqual((self.held.kind, self.ask.kind), ("record", "request"))
        self.assertEqual(self.ask.fields[0].comment.strip(), "Kind.")

    def test_tags_and_values_on_the_wire(self):
        fields = [(f.tag, f.wire, f.label) for f in self.held.fields + self.ask.fields]
        self.assertEqual(fields, [("0d", "32-bit", "required"), ("08", "varint", "optional"),
                                  ("82 01", "length", "repeated"), ("82 80 01", "length", "optional"),
                                  ("1a", "length", "repeated")])
        self.assertEqual([v.wire for v in self.unit.enums[0].values],
                         ["00", "ff ff ff ff ff ff ff ff ff 01", "fa 55"])

    def test_names_and_references(self):
        self.assertEqual((self.ask.full_name, self.ask.cpp_name), ("a.b.Ask", "a::b::Ask"))
        self.assertEqual(self.ask.fields[2].default, "-1")
        self.assertEqual(self.held.carried_by, [("Ask", "held")])
        self.assertEqual(self.unit.enums[0].carried_by, [("Ask", "kind")])


    def test_who_answers_whom(self):
        self.assertEqual([(m.answered_by, m.answers, m.is_agreed) for m in self.unit.messages],
                         [([], [], False), (["Reply"], [], False), ([], ["Ask"], False),
                          ([], [], True)])

    def test_comments_on_answers_contradict_each_other(self):
        for said, instead, fault in (
                ("Answered\n// by a Reply.", "Its answer is agreed between the sides.", "answers Ask"),
                ("to answer Ask", "to anything", "answered by Reply"),
                ("Its response is agreed between the sides.", "", "Order tells neither")):
            with self.subTest(fault), self.assertRaisesRegex(ValueError, fault):
                load(COMMENTED.replace(said, instead))


class MissingComments(unittest.TestCase):
    def test_every_gap_is_named(self):
        gaps = {"// Test unit.": "the file itself", "// A kind.": "Kind",
                "// Below none.": "Kind.KIND_LEAST", "// Request to ask.\n// Answered\n// by a Reply.": "Ask",
                "// Numbers.": "Ask.numbers"}
        text = COMMENTED.replace("// A license line, not the comment of the file.\n", "")
        for comment in gaps:
            text = text.replace(comment, "")
        with self.assertRaises(schema.MissingComments) as raised:
            load(text)
        self.assertEqual(set(raised.exception.args[0]), {f"test.proto: {n}" for n in gaps.values()})


if __name__ == "__main__":
    unittest.main()
