// Fuzz target over text.h and types.h: what is masked must not depend on what it masks, and bytes,
// messages and texts must agree with one another and with text_model.h. Input: one byte that
// chooses the type, one for options, then the bytes; beyond the second round of types, the bytes
// are a type's name too.
#include <virtual_modem/text.h>
#include <virtual_modem/types.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "check.h"
#include "support/message_types.h"
#include "support/schema.h"
#include "text_model.h"

namespace virtual_modem::testing {
namespace {

constexpr TextOptions kLines{false, false, 0};
constexpr TextOptions kShownLines{true, false, 0};

constexpr std::string_view kPlanted = "\\026";  // kMarker as it is printed

std::string Mark(std::size_t missing) {
  return " [... " + std::to_string(missing) + " more bytes]";
}

// Lines without their indentation, a space between them.
std::string OneLine(std::string_view lines) {
  std::string line;
  while (!lines.empty()) {
    lines.remove_prefix(std::min(lines.find_first_not_of(' '), lines.size()));
    const std::size_t size = lines.find('\n');
    FUZZ_CHECK(size != std::string_view::npos, "a line without its end");
    if (!line.empty()) line += ' ';
    line += lines.substr(0, size);
    lines.remove_prefix(size + 1);
  }
  return line;
}

// The byte at which the last line says that a message breaks, none when it says nothing.
std::optional<std::size_t> BreakIn(std::string_view lines) {
  constexpr std::string_view kMalformed = "# malformed at byte ";
  const std::size_t start = lines.rfind('\n', lines.empty() ? 0 : lines.size() - 2) + 1;
  if (lines.substr(start, kMalformed.size()) != kMalformed) return std::nullopt;
  return std::stoul(std::string(lines.substr(start + kMalformed.size())));
}

// The two forms in which the library takes a message.
struct Encoded {
  std::string_view type;
  std::string_view bytes;

  std::string Text(const TextOptions& options) const { return ToText(type, bytes, options); }
  std::string Masked() const { return MaskedBytes(type, bytes); }
};

struct Parsed {
  const MessageLite& message;

  std::string Text(const TextOptions& options) const { return ToText(message, options); }
  std::string Masked() const { return MaskedBytes(message); }
};

// A limit to `size` bytes of text: none, about as many, or a part of them.
std::size_t Limit(unsigned choice, std::size_t size) {
  if (choice == 0) return 0;
  if (choice > 16) return size * (choice - 16) / 16;
  return size + 8 > choice ? size + 8 - choice : 1;
}

void CheckCut(const std::string& text, const std::string& cut, std::size_t limit) {
  if (limit == 0 || text.size() <= limit) {
    FUZZ_CHECK(cut == text, "cut without need");
    return;
  }
  const std::size_t kept = cut.rfind(" [... ");
  FUZZ_CHECK(kept != std::string::npos, "no mark");
  FUZZ_CHECK(text.compare(0, kept, cut, 0, kept) == 0, "text before the mark");
  const std::string mark = Mark(text.size() - kept);
  FUZZ_CHECK(cut.compare(kept, std::string::npos, mark) == 0, "the mark");
  FUZZ_CHECK(cut.size() <= std::max(limit, mark.size()), "longer than allowed");
  FUZZ_CHECK(kept + Mark(text.size()).size() >= limit, "shorter than it need be");
}

class TextChecker {
 public:
  TextChecker(std::size_t index, unsigned choice)
      : type_(AllMessageTypes()[index]),
        schema_(SchemaOf(type_.name)),
        shown_((choice & 1) != 0),
        single_line_((choice & 2) != 0),
        limit_(choice >> 3) {}

  void Run(const std::string& bytes) const {
    const auto message = type_.create();
    const bool parsed = Read(bytes, *message);
    const Edited altered = EditHidden(schema_, bytes, Edit::kAlter, false);
    const Edited planted = EditHidden(schema_, bytes, Edit::kPlant, false);
    FUZZ_CHECK(!(parsed && altered.malformed), "the model");
    const bool fits = parsed && message->IsInitialized() && !altered.wrong_type;
    if (fits) {
      CheckBytes(bytes, altered, planted);
      FUZZ_CHECK(Again(MaskedBytes(type_.name, bytes)) == Again(MaskedBytes(*message)),
                 "masks of bytes and message");
    } else {
      CheckBytes(bytes, EditHidden(schema_, bytes, Edit::kAlter, true),
                 EditHidden(schema_, bytes, Edit::kPlant, true));
    }
    const Outputs out = CheckMessage(*message, fits);
    if (!parsed) return;
    const auto other = type_.create();
    const auto marked = type_.create();
    FUZZ_CHECK(Read(altered.bytes, *other) && Read(planted.bytes, *marked), "the model's edits");
    CheckHidden(out, Parsed{*other}, Parsed{*marked});
  }

 private:
  static bool Read(const std::string& bytes, MessageLite& message) {
    return message.ParsePartialFromArray(bytes.data(), static_cast<int>(bytes.size()));
  }
  // As a message writes them that was read from the bytes.
  std::string Again(const std::string& bytes) const {
    const auto message = type_.create();
    FUZZ_CHECK(Read(bytes, *message), "masked bytes do not parse");
    return message->SerializePartialAsString();
  }

  struct Outputs {
    std::string lines;   // masked
    std::string masked;  // bytes
    std::string chosen;  // text by the options of the input, not cut
  };

  // That the texts of a subject agree, with one another and with its masked bytes, of which a
  // parser must think the same.
  template <typename Subject>
  Outputs CheckOutputs(const Subject& subject, const std::string& bytes) const {
    Outputs out{subject.Text(kLines), subject.Masked(), {}};
    const std::string& lines = out.lines;
    FUZZ_CHECK(std::all_of(lines.begin(), lines.end(),
                           [](char c) { return (c >= ' ' && c <= '~') || c == '\n'; }),
               "a byte that does not print");
    TextOptions options{shown_, single_line_, 0};
    out.chosen = shown_ || single_line_ ? subject.Text(options) : lines;
    if (single_line_ && !shown_) FUZZ_CHECK(out.chosen == OneLine(lines), "one line and many");
    options.max_bytes = Limit(limit_, out.chosen.size());
    CheckCut(out.chosen, subject.Text(options), options.max_bytes);

    const auto original = type_.create();
    const auto masked = type_.create();
    const bool parsed = Read(bytes, *original);
    FUZZ_CHECK(parsed == Read(out.masked, *masked), "masked bytes parse as before");
    FUZZ_CHECK(parsed || out.masked.size() == bytes.size(), "offsets in masked bytes");
    FUZZ_CHECK(!parsed || original->IsInitialized() == masked->IsInitialized(), "what they lack");
    const std::optional<std::size_t> breaks = BreakIn(lines);
    FUZZ_CHECK(breaks.has_value() == !parsed && breaks.value_or(0) <= bytes.size(), "malformed");
    return out;
  }

  // That masked output is the same for bytes whose hidden values differ, and holds no planted one.
  template <typename Subject>
  static void CheckHidden(const Outputs& out, const Subject& altered, const Subject& planted) {
    FUZZ_CHECK(out.lines == altered.Text(kLines), "text tells what it masks");
    FUZZ_CHECK(out.masked == altered.Masked(), "bytes tell what they mask");
    FUZZ_CHECK(planted.Text(kLines).find(kPlanted) == std::string::npos, "a marker in the text");
    FUZZ_CHECK(Markers(planted.Masked()) <= Markers(out.masked), "a marker in the bytes");
  }
  static std::ptrdiff_t Markers(const std::string& bytes) {
    return std::count(bytes.begin(), bytes.end(), kMarker);
  }

  void CheckBytes(const std::string& bytes, const Edited& altered, const Edited& planted) const {
    const Outputs out = CheckOutputs(Encoded{type_.name, bytes}, bytes);
    FUZZ_CHECK(ToText(type_.name, out.masked, kLines) == out.lines, "text of masked bytes");
    FUZZ_CHECK(MaskedBytes(type_.name, out.masked) == out.masked, "masked twice");
    CheckHidden(out, Encoded{type_.name, altered.bytes}, Encoded{type_.name, planted.bytes});
  }

  Outputs CheckMessage(const MessageLite& message, bool fits) const {
    const std::string bytes = message.SerializePartialAsString();
    FUZZ_CHECK(TypeOf(message).name == type_.name, "type");
    // Where a parse failed, it may have left half an unknown field.
    Outputs out = CheckOutputs(Parsed{message}, bytes);
    FUZZ_CHECK(MissingFields(message).empty() == message.IsInitialized(), "missing fields");
    if (fits || shown_) {
      const TextOptions options{shown_, single_line_, 0};
      FUZZ_CHECK(ToText(type_.name, bytes, options) == out.chosen, "text of bytes and message");
    }
    return out;
  }

  const MessageType& type_;
  const MessageSchema& schema_;
  const bool shown_;
  const bool single_line_;
  const unsigned limit_;
};

void CheckUnknownType(std::string_view name, unsigned choice) {
  if (FindType(name) != nullptr) return;
  const Encoded subject{name, name};
  FUZZ_CHECK(subject.Masked().empty(), "bytes of no type");
  const std::string text = subject.Text(kShownLines);
  FUZZ_CHECK(text.rfind("# no message type \"", 0) == 0 && text.find('\n') == std::string::npos,
             "text of no type");
  const std::size_t limit = Limit(choice >> 3, text.size());
  CheckCut(text, subject.Text({true, true, limit}), limit);
}

void Run(unsigned type, unsigned choice, std::string_view bytes) {
  constexpr int kCopies = 8;  // lists outgrow the library's buffers
  const std::size_t types = AllMessageTypes().size();
  if (type >= 2 * types) CheckUnknownType(bytes, choice);
  std::string input(bytes);
  for (int i = 1; (choice & 0x1c) == 0x1c && i < kCopies; ++i) input += bytes;
  TextChecker(type % types, choice).Run(input);
}

}  // namespace
}  // namespace virtual_modem::testing

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size < 2) return -1;
  virtual_modem::testing::Run(data[0], data[1],
                              {reinterpret_cast<const char*>(data) + 2, size - 2});
  return 0;
}
