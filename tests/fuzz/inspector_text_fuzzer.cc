// Fuzz target over what reads text: logs, pasted bytes, the text format, JSON. Input: one byte that
// chooses the message type, one for the reader, then the text. Nothing may take more work than
// grows with the text's size.
#include <google/protobuf/stubs/logging.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "check.h"
#include "file.h"
#include "inspect/commands/commands.h"
#include "inspect/error.h"
#include "inspect/read/pasted.h"
#include "inspect/read/recording.h"
#include "work.h"

namespace virtual_modem::inspect {
namespace {

void Read(Schema& schema, unsigned type, unsigned reader, std::string_view text) {
  std::string note;
  if (reader < 2) {
    EncodeMessage(text, reader == 1, schema.Scratch(type));
  } else if (reader < 2 + 7) {
    ParsePasted(text, static_cast<Encoding>(reader - 2), note);
  } else {
    static const File file;
    ByteStream stream(file.Holding(text));
    const std::unique_ptr<Traffic> log = ReadLog(schema, stream);
    Record record;
    std::int64_t last = 0;
    while (log->Next(record)) {
      FUZZ_CHECK(record.number > last, "every line once");
      FUZZ_CHECK(record.time >= kNoTime && !record.time_text.empty(), "time");
      last = record.number;
    }
  }
}

}  // namespace
}  // namespace virtual_modem::inspect

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace virtual_modem::inspect;  // NOLINT: one function
  static Schema schema(DESCRIPTOR_SET);
  google::protobuf::SetLogHandler(nullptr);
  if (size < 2) return -1;
  const std::string_view text(reinterpret_cast<const char*>(data) + 2, size - 2);
  const std::uint64_t before = WorkSoFar();
  try {
    Read(schema, static_cast<unsigned>(ChosenType(data, schema.types().size())), data[1] % 10,
         text);
  } catch (const Error&) {
    // Bad input, as told to the user.
  }
  constexpr std::uint64_t kWorkOfAny = 4'000'000;  // such as to build the types that are named
  constexpr std::uint64_t kWorkOfByte = 1000;
  FUZZ_CHECK(WorkSoFar() - before <= kWorkOfAny + kWorkOfByte * size, "work");
  return 0;
}
