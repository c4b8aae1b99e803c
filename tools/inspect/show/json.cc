#include "inspect/show/json.h"

#include <google/protobuf/stubs/strutil.h>
#include <google/protobuf/type.pb.h>
#include <google/protobuf/util/json_util.h>
#include <google/protobuf/util/type_resolver_util.h>

#include <array>
#include <memory>
#include <sstream>
#include <vector>

#include "inspect/error.h"
#include "inspect/read/hex.h"
#include "inspect/show/terminal.h"
#include "text/print.h"

namespace virtual_modem::inspect {
namespace {

using google::protobuf::util::Status;
using google::protobuf::util::TypeResolver;

constexpr const char* kUrlPrefix = "virtual-modem";

// Takes required fields for optional ones: the runtime's reader refuses a message at the first that
// is missing, where the findings name all of them.
class LenientResolver : public TypeResolver {
 public:
  explicit LenientResolver(const google::protobuf::DescriptorPool* pool)
      : types_(google::protobuf::util::NewTypeResolverForDescriptorPool(kUrlPrefix, pool)) {}

  Status ResolveMessageType(const std::string& url, google::protobuf::Type* type) override {
    const Status status = types_->ResolveMessageType(url, type);
    for (google::protobuf::Field& field : *type->mutable_fields()) {
      if (field.cardinality() == google::protobuf::Field::CARDINALITY_REQUIRED) {
        field.set_cardinality(google::protobuf::Field::CARDINALITY_OPTIONAL);
      }
    }
    return status;
  }
  Status ResolveEnumType(const std::string& url, google::protobuf::Enum* type) override {
    return types_->ResolveEnumType(url, type);
  }

 private:
  const std::unique_ptr<TypeResolver> types_;
};

// What the walk comes by, as JSON.
class Writer : public text::Handler {
 public:
  Writer(const Schema& schema, unsigned message, bool in_lines, std::string& json,
         Findings& findings)
      : schema_(schema), message_(message), in_lines_(in_lines), json_(json), findings_(findings) {
    Open('{');
  }

  void Number(const text::Level& /*level*/, const text::Field& field, std::uint64_t value) {
    Key(field);
    std::array<char, text::kMaxDigits> digits;
    char* end = text::WriteNumber(field, value, digits.data());
    // Those of 64 bits in quotes, since JSON's numbers may be read as doubles.
    const bool quoted =
        field.kind == text::FieldKind::kInt64 || field.kind == text::FieldKind::kUint64;
    if (quoted) json_ += '"';
    json_.append(digits.data(), end);
    if (quoted) json_ += '"';
  }
  void Enum(const text::Level& /*level*/, const text::Field& field, std::uint64_t /*value*/,
            std::string_view name) {
    Key(field);
    json_.append("\"").append(name).append("\"");
  }
  void String(const text::Level& level, const text::Field& field, std::string_view bytes) {
    Key(field);
    if (field.kind == text::FieldKind::kBytes) {
      std::string base64;
      google::protobuf::Base64Escape(google::protobuf::StringPiece(bytes.data(), bytes.size()),
                                     &base64);
      json_.append("\"").append(base64).append("\"");
    } else if (!AppendJsonString(bytes, json_) && told_ != &field) {
      told_ = &field;
      const unsigned message = level.field == nullptr ? message_ : level.field->below;
      ++findings_.not_utf8;
      findings_.Add(schema_.types()[message].type->full_name() + "." +
                    std::string(schema_.tables().NameOf(field)) +
                    ": not UTF-8; \"?\" stands for each byte that is not"
                    " (the text output shows them)");
    }
  }
  std::size_t Begin(const text::Level& /*level*/, const text::Field& field) {
    Key(field);
    Open('{');
    return 0;
  }
  void End(const text::Level& /*level*/, const text::Field& /*field*/, std::size_t /*mark*/) {
    Finish();
  }
  void Undeclared(const text::Level& level, const text::Field& field, std::uint64_t value,
                  std::string_view /*whole*/) {
    Number(level, field, value);
  }

  // Closes the message.
  void Finish() {
    if (open_.back().list != nullptr) Close(']');
    Close('}');
  }

 private:
  // A list or message that is not closed yet.
  struct Container {
    const text::Field* list;  // whose elements it holds, null for a message
    bool empty;
  };

  void Open(char bracket, const text::Field* list = nullptr) {
    json_ += bracket;
    open_.push_back({list, true});
  }
  void Close(char bracket) {
    const bool empty = open_.back().empty;
    open_.pop_back();
    if (!empty) Break();
    json_ += bracket;
  }
  void Break() {
    if (!in_lines_) return;
    json_ += '\n';
    json_.append(open_.size(), ' ');
  }
  void NextElement() {
    if (!open_.back().empty) json_ += ',';
    open_.back().empty = false;
    Break();
  }

  void Key(const text::Field& field) {
    if (open_.back().list != nullptr && open_.back().list != &field) Close(']');
    if (open_.back().list == nullptr) {
      NextElement();
      json_.append("\"").append(schema_.tables().NameOf(field)).append("\":");
      if (in_lines_) json_ += ' ';
      if (field.repeated) Open('[', &field);
    }
    if (field.repeated) NextElement();
  }

  const Schema& schema_;
  const unsigned message_;
  const bool in_lines_;
  std::string& json_;
  Findings& findings_;
  std::vector<Container> open_;
  const text::Field* told_ = nullptr;  // the last one that a finding was about
};

void AppendUtf16Escape(std::uint32_t unit, std::string& json) {
  const char bytes[] = {static_cast<char>(unit >> 8U), static_cast<char>(unit)};
  json += "\\u" + ToHex({bytes, sizeof bytes});
}

// The runtime shows the place by lines below the error; they become one.
std::string OneLine(const std::string& error) {
  std::istringstream lines(error);
  std::string what;
  std::string where;
  std::getline(lines, what);
  std::getline(lines, where);
  if (!what.empty() && what.back() == '.') what.pop_back();
  return where.empty() ? what : what + ", near: " + where;
}

}  // namespace

void AppendJson(const Schema& schema, unsigned message, std::string_view bytes, bool in_lines,
                std::string& json, Findings& findings) {
  Writer writer(schema, message, in_lines, json, findings);
  text::WalkMessage(schema.tables(), message, bytes, writer);
  writer.Finish();
}

bool AppendJsonString(std::string_view text, std::string& json) {
  constexpr std::string_view kLetters = "btn\vfr";  // from \b on; \v has no letter in JSON
  bool is_utf8 = true;
  json += '"';
  while (!text.empty()) {
    std::size_t plain = 0;
    while (plain < text.size() && text[plain] >= ' ' && text[plain] != '"' && text[plain] != '\\' &&
           text[plain] != '<' && text[plain] != '>' && text[plain] != '\x7F') {
      ++plain;
    }
    json.append(text.substr(0, plain));
    text.remove_prefix(plain);
    if (text.empty()) break;
    std::size_t size = 0;
    const std::uint32_t code = TakeUtf8(text, size);
    if (size == 0) {
      json += '?';
      is_utf8 = false;
      size = 1;
    } else if (code == '"' || code == '\\') {
      json += '\\';
      json += static_cast<char>(code);
    } else if (code >= '\b' && code <= '\r' && code != '\v') {
      json += '\\';
      json += kLetters[code - '\b'];
    } else if (ActsOnTerminal(code) || code == '<' || code == '>') {  // < and >: pages may embed it
      if (code > 0xFFFF) AppendUtf16Escape(0xD800 + ((code - 0x10000) >> 10U), json);
      AppendUtf16Escape(code > 0xFFFF ? 0xDC00 + (code & 0x3FFU) : code, json);
    } else {
      json.append(text.substr(0, size));
    }
    text.remove_prefix(size);
  }
  json += '"';
  return is_utf8;
}

std::string ParseJson(std::string_view json, const Descriptor& type) {
  LenientResolver resolver(type.file()->pool());
  std::string bytes;
  const auto status = google::protobuf::util::JsonToBinaryString(
      &resolver, std::string(kUrlPrefix) + "/" + type.full_name(),
      google::protobuf::StringPiece(json.data(), json.size()), &bytes);
  if (!status.ok()) throw Error("JSON: " + OneLine(status.message().ToString()));
  return bytes;
}

}  // namespace virtual_modem::inspect
