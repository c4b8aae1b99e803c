// Fuzz target over text.h and types.h: what is masked must not depend on what it masks, and bytes,
// messages and texts must agree with one another and with text_model.h. Input: one byte that
// chooses the type, one for options, then the bytes; beyond the second round of types, the bytes
// are a type's name too.
#include <virtual_modem/text.h>
#include <virtual_modem/types.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

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

// Takes a comment off the end of lines and returns it; empty when there is none.
std::string_view TakeComment(std::string_view* lines) {
  if (lines->empty()) return {};
  const std::size_t before = lines->substr(0, lines->size() - 1).rfind('\n');
  const std::size_t start = before == std::string_view::npos ? 0 : before + 1;
  if ((*lines)[start] != '#') return {};
  const std::string_view comment = lines->substr(start);
  lines->remove_suffix(comment.size());
  return comment;
}

struct Comments {
  std::string_view fields;  // what stands before them
  bool malformed = false;
  std::size_t offset = 0;         // where
  std::size_t unknown = 0;        // fields not shown
  std::size_t unknown_bytes = 0;  // that they take
};

Comments ReadComments(std::string_view lines) {
  Comments comments{lines};
  constexpr std::string_view kMalformed = "# malformed at byte ";
  std::string_view comment = TakeComment(&comments.fields);
  comments.malformed = comment.substr(0, kMalformed.size()) == kMalformed;
  if (comments.malformed) {
    comments.offset = std::stoul(std::string(comment.substr(kMalformed.size())));
    comment = TakeComment(&comments.fields);
  }
  if (!comment.empty()) {
    const std::size_t comma = comment.find(", ");
    FUZZ_CHECK(comment.substr(0, 2) == "# " && comma != std::string_view::npos, "unknown fields");
    comments.unknown = std::stoul(std::string(comment.substr(2)));
    comments.unknown_bytes = std::stoul(std::string(comment.substr(comma + 2)));
    FUZZ_CHECK(comment.find(" bytes, not shown\n") != std::string_view::npos, "how many bytes");
  }
  FUZZ_CHECK(TakeComment(&comments.fields).empty(), "a third comment");
  return comments;
}

// The two forms in which the library takes a message.
struct Encoded {
  std::string_view type;
  std::string_view bytes;

  std::string Text(const TextOptions& options) const { return ToText(type, bytes, options); }
  std::string Masked() const { return MaskedBytes(type, bytes); }
  Encoded Like(std::string_view other, const MessageLite& /*parsed*/) const {
    return {type, other};
  }
};

struct Parsed {
  const MessageLite& message;

  std::string Text(const TextOptions& options) const { return ToText(message, options); }
  std::string Masked() const { return MaskedBytes(message); }
  Parsed Like(std::string_view /*bytes*/, const MessageLite& other) const { return {other}; }
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
      CheckBytes(bytes, parsed, altered, planted);
    } else {
      CheckBytes(bytes, parsed, EditHidden(schema_, bytes, Edit::kAlter, true),
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

  struct Outputs {
    std::string lines;   // masked
    std::string masked;  // bytes
    std::string chosen;  // text by the options of the input, not cut
  };

  // That the texts of a subject agree, with one another and with its masked bytes.
  template <typename Subject>
  Outputs CheckOutputs(const Subject& subject) const {
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

    const auto message = type_.create();
    FUZZ_CHECK(Read(out.masked, *message), "masked bytes do not parse");
    FUZZ_CHECK(ToText(type_.name, out.masked, kShownLines) == ReadComments(lines).fields,
               "masked bytes and masked text");
    FUZZ_CHECK(subject.Like(out.masked, *message).Masked() == out.masked, "masked twice");
    return out;
  }

  // That masked output is the same for bytes whose hidden values differ, and holds no planted one.
  template <typename Subject>
  static void CheckHidden(const Outputs& out, const Subject& altered, const Subject& planted) {
    FUZZ_CHECK(out.lines == altered.Text(kLines), "text tells what it masks");
    FUZZ_CHECK(out.masked == altered.Masked(), "bytes tell what they mask");
    FUZZ_CHECK(planted.Text(kLines).find(kPlanted) == std::string::npos, "a marker in the text");
  }

  void CheckBytes(const std::string& bytes, bool parsed, const Edited& altered,
                  const Edited& planted) const {
    const Outputs out = CheckOutputs(Encoded{type_.name, bytes});
    const Comments comments = ReadComments(out.lines);
    FUZZ_CHECK(comments.malformed == !parsed, "malformed or not");
    FUZZ_CHECK(comments.offset <= bytes.size(), "where");
    FUZZ_CHECK(!parsed || comments.unknown == altered.unknown, "unknown fields");
    FUZZ_CHECK(comments.unknown_bytes <= bytes.size(), "more unknown bytes than there are");
    CheckHidden(out, Encoded{type_.name, altered.bytes}, Encoded{type_.name, planted.bytes});
  }

  Outputs CheckMessage(const MessageLite& message, bool fits) const {
    const std::string bytes = message.SerializePartialAsString();
    FUZZ_CHECK(TypeOf(message).name == type_.name, "type");
    FUZZ_CHECK(SerialOf(message) == SerialIn(schema_, bytes), "serial");
    std::vector<std::string> missing = MissingFields(message);
    Outputs out = CheckOutputs(Parsed{message});
    const Comments comments = ReadComments(out.lines);
    // A parse that failed may have left half an unknown field, which ends what is read of it.
    const bool whole = Read(bytes, *type_.create());
    FUZZ_CHECK(comments.malformed == !whole, "malformed or not");
    if (!whole) return out;

    const MessageModel model = ModelOf(schema_, bytes);
    std::sort(missing.begin(), missing.end());
    FUZZ_CHECK(missing == model.missing, "missing fields");
    FUZZ_CHECK(missing.empty() == message.IsInitialized(), "missing fields or not");
    FUZZ_CHECK(out.masked == model.masked, "masked bytes");
    FUZZ_CHECK(comments.unknown_bytes == model.unknown_bytes, "unknown bytes");
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
