// Four times the text takes at most five times the work, whatever piece it repeats; and what is too
// much for its size, or ends the program, fails in the fuzz target that this runs.
#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <string>

#include "../fuzz/work.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace {

constexpr std::size_t kReaders = 10;  // of the target

struct Repetition {
  std::string front;
  std::string piece;
  std::string back;  // for each piece
};

const Repetition kRepetitions[] = {
    {"", "[", "]"},
    {"", "{", "}"},
    {"", "[", ""},
    {"", "[{", ""},
    {"", "x{", ""},
    {"", "{\"a\":", ""},
    {"", "[1] ", ""},
    {"", "[1,", "]"},
    // Strings that nothing closes.
    {"\"", "\\\"", ""},
    {"", "\\\"", ""},
    {"'", "\\'\"", ""},
    {"", "\"\\q", ""},
    {"", "'", ""},
    // Bytes.
    {"", "0x", ""},
    {"", "0800102a-", ""},
    {"", "0000: 08 ", ""},
    {"0000: ", "08 ", ""},
    {"", "\n", "08"},
    {"", " ", "[1]"},
    // Names of types, without a message, with the beginning of one, and with many.
    {"", "Dial ", ""},
    {"11-21 18:07:01.123 D RILJ: ", "Dial ", ""},
    {"", "12-31 23:59:59 Dial #1 ", ""},
    {"", "Dial serial: 1 ", ""},
    {"", "Dial 08 ", ""},
    {"", "Dial", " "},
    {"Dial", " ", "Dial"},
    {"", "-> Dial/3 ", ""},
    {"", "-> Dial       1  ", ""},
    {"Dial ", "serial: x ", ""},
    {"Dial ", "Call { ", ""},
    {"", "Dial { serial: x ", ""},
    {"", "Dial serial: \"", ""},
    {"Dial serial: 1 ", "x{", "}"},
    {"Dial ", "3: 1 ", ""},
    {"Dial ", "address: \"1\" ", " [... 9 more bytes]"},
    {"", "18:07:01 ", "Dial 080010011801"},
    // Text and JSON of messages.
    {"", "serial: 1 ", ""},
    {"address: ", "\"a\" ", ""},
    {"", "calls { ", "}"},
    {"", "x: [", "]"},
    {"{\"calls\":[", "{},", ""},
    {"{\"address\":\"", "\\u0041", ""},
    {"{", "\"serial\":1,", ""},
    {"", "{\"calls\":[", "]}"},
};

std::uint64_t Work(const Repetition& repetition, char type, std::size_t reader, std::size_t size) {
  std::string input{type, static_cast<char>(reader)};
  input += repetition.front;
  const std::size_t count = size / (repetition.piece.size() + repetition.back.size());
  for (std::size_t i = 0; i < count; ++i) input += repetition.piece;
  for (std::size_t i = 0; i < count; ++i) input += repetition.back;
  const std::uint64_t before = WorkSoFar();
  LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(input.data()), input.size());
  return WorkSoFar() - before;
}

TEST(RepeatedText, TakesWorkInProportion) {
  constexpr std::size_t kSize = 15U << 10U;
  for (const Repetition& repetition : kRepetitions) {
    for (std::size_t reader = 0; reader < kReaders; ++reader) {
      SCOPED_TRACE("reader " + std::to_string(reader) + ": " + repetition.front + repetition.piece +
                   "..." + repetition.back + "...");
      for (const char type : {'\0', '\x01', '\x30'}) {
        Work(repetition, type, reader, 0);  // what is built once
        EXPECT_LE(Work(repetition, type, reader, 4 * kSize),
                  5 * Work(repetition, type, reader, kSize));
      }
    }
  }
}

}  // namespace
