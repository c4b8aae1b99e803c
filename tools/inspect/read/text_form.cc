#include "inspect/read/text_form.h"

#include <google/protobuf/io/tokenizer.h>
#include <google/protobuf/text_format.h>

#include <algorithm>

#include "inspect/read/hex.h"

namespace virtual_modem::inspect {
namespace {

constexpr std::string_view kCutMark = "[... ";  // of texts that were cut to the length of a line

// Deeper messages are refused, as the runtime refuses them in bytes.
constexpr int kMaxDepth = 100;

// Keeps the first error: the ones after it are mostly its consequences.
struct FirstError : google::protobuf::io::ErrorCollector {
  void AddError(int line, google::protobuf::io::ColumnNumber column,
                const std::string& message) override {
    if (!text.empty()) return;
    text = "line " + std::to_string(line + 1) + ", column " + std::to_string(column + 1) + ": " +
           message;
  }
  std::string text;
};

class Scanner {
 public:
  explicit Scanner(std::string_view text) : text_(text) {}

  TextForm Scan() {
    while (TakeField()) {
    }
    TextForm form;
    SkipBlanks();
    const bool ends = AtEnd() || text_.substr(at_, kCutMark.size()) == kCutMark;
    form.whole = AtEnd() && depth_ == 0 && !unclosed_;
    form.cut = depth_ > 0 || unclosed_ || (ends && !AtEnd());
    // A number or name that touches the cut may have gone on.
    const Place& last = form.cut && bare_end_ != 0 && IsCutAt(bare_end_) ? before_ : last_;
    form.text = text_.substr(0, last.end);
    form.text.append(static_cast<std::size_t>(last.depth), '}');
    form.fields = last.fields;
    form.end = last.end;
    return form;
  }

 private:
  // A place where a field ends.
  struct Place {
    std::size_t end = 0;
    std::size_t fields = 0;
    int depth = 0;
  };

  bool AtEnd() const { return at_ >= text_.size(); }
  bool At(char c) const { return !AtEnd() && text_[at_] == c; }
  bool IsCutAt(std::size_t at) const {
    return at == text_.size() || (text_[at] == ' ' && text_.substr(at + 1, 5) == kCutMark);
  }

  void SkipBlanks() {
    for (; !AtEnd(); ++at_) {
      if (text_[at_] == '#') {
        at_ = std::min(text_.find('\n', at_), text_.size() - 1);
      } else if (!IsSpace(text_[at_]) && text_[at_] != ',' && text_[at_] != ';') {
        return;
      }
    }
  }

  std::string_view TakeWord() {
    const std::size_t begin = at_;
    while (!AtEnd() && IsWord(text_[at_])) ++at_;
    return text_.substr(begin, at_ - begin);
  }

  // False where there is none.
  bool TakeField() {
    SkipBlanks();
    if (At('}') && depth_ > 0) {
      ++at_;
      --depth_;
      return Keep(0);
    }
    const std::size_t begin = at_;
    const std::string_view name = TakeWord();
    while (At(' ')) ++at_;
    const bool colon = At(':');
    if (colon) ++at_;
    const bool spaced = At(' ');
    while (At(' ')) ++at_;
    if (!name.empty() && At('{')) {
      ++at_;
      ++depth_;
      return Keep(1);
    }
    // Times of day are no numbers of fields.
    if (!name.empty() && colon && (spaced || !IsDigit(name[0])) && TakeValue()) return Keep(1);
    if (!unclosed_) at_ = begin;
    return false;
  }

  bool TakeValue() {
    if (At('"') || At('\'')) return TakeStrings();
    const std::size_t begin = at_;
    if (At('-')) ++at_;
    const std::string_view word = TakeWord();
    const bool number = !word.empty() && IsDigit(word[0]);
    const bool hex = word.substr(0, 2) == "0x";
    const bool digits = std::all_of(word.begin(), word.end(), IsDigit);
    const bool whole = number ? hex || (digits && (word[0] != '0' || word.size() == 1))
                              : !word.empty() && text_[begin] != '-';
    bare_end_ = whole ? at_ : 0;
    return whole;
  }

  bool TakeStrings() {
    bare_end_ = 0;
    while (At('"') || At('\'')) {
      const char quote = text_[at_++];
      while (!AtEnd() && !At(quote)) at_ += At('\\') ? 2 : 1;
      unclosed_ = AtEnd();
      if (unclosed_) return false;
      ++at_;
      const std::size_t end = at_;
      while (At(' ')) ++at_;
      if (!At('"') && !At('\'')) at_ = end;
    }
    return true;
  }

  bool Keep(std::size_t fields) {
    before_ = last_;
    last_ = {at_, last_.fields + fields, depth_};
    if (bare_end_ != at_) bare_end_ = 0;
    return true;
  }

  std::string_view text_;
  std::size_t at_ = 0;
  int depth_ = 0;
  bool unclosed_ = false;     // within a string
  std::size_t bare_end_ = 0;  // of the last field when its value has no quotes
  Place last_;
  Place before_;
};

}  // namespace

std::string ParseText(const std::string& text, bool lenient, google::protobuf::Message& message) {
  FirstError errors;
  google::protobuf::TextFormat::Parser parser;
  parser.RecordErrorsTo(&errors);
  parser.AllowPartialMessage(true);
  parser.AllowUnknownField(lenient);
  parser.AllowFieldNumber(lenient);
  parser.SetRecursionLimit(kMaxDepth);
  parser.ParseFromString(text, &message);
  return errors.text;
}

TextForm TakeTextForm(std::string_view text) { return Scanner(text).Scan(); }

}  // namespace virtual_modem::inspect
