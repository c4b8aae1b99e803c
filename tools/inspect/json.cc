#include "inspect/json.h"

#include <google/protobuf/stubs/common.h>
#include <google/protobuf/type.pb.h>
#include <google/protobuf/util/json_util.h>
#include <google/protobuf/util/type_resolver_util.h>

#include <sstream>
#include <vector>

#include "inspect/error.h"

namespace virtual_modem::inspect {
namespace {

using google::protobuf::Reflection;
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

// Whether the text had to be changed.
bool MakeUtf8(std::string& text) {
  if (google::protobuf::internal::IsStructurallyValidUTF8(text)) return false;
  std::string valid(text.size(), '\0');
  const char* result =
      google::protobuf::internal::UTF8CoerceToStructurallyValid(text, valid.data(), '?');
  text.assign(result, text.size());
  return true;
}

void MakeUtf8(Message& message, Findings& findings) {
  const Reflection& reflection = *message.GetReflection();
  std::vector<const FieldDescriptor*> fields;
  reflection.ListFields(message, &fields);
  for (const FieldDescriptor* field : fields) {
    const bool is_string = field->cpp_type() == FieldDescriptor::CPPTYPE_STRING;
    const bool is_message = field->message_type() != nullptr;
    bool changed = false;
    if (field->is_repeated() && (is_string || is_message)) {
      for (int i = 0; i < reflection.FieldSize(message, field); ++i) {
        if (is_message) {
          MakeUtf8(*reflection.MutableRepeatedMessage(&message, field, i), findings);
          continue;
        }
        std::string text = reflection.GetRepeatedString(message, field, i);
        if (!MakeUtf8(text)) continue;
        reflection.SetRepeatedString(&message, field, i, text);
        changed = true;
      }
    } else if (is_message) {
      MakeUtf8(*reflection.MutableMessage(&message, field), findings);
    } else if (is_string) {
      std::string text = reflection.GetString(message, field);
      changed = MakeUtf8(text);
      if (changed) reflection.SetString(&message, field, text);
    }
    if (changed) {
      findings.Add(Findings::kText, field->full_name() +
                                        ": not UTF-8; \"?\" stands for each byte that is not"
                                        " (the text output shows them)");
    }
  }
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

Json::Json(const Descriptor& type)
    : resolver_(std::make_unique<LenientResolver>(type.file()->pool())),
      url_(std::string(kUrlPrefix) + "/" + type.full_name()) {}

std::string Json::Print(Message& message, bool in_lines, Findings& findings) const {
  MakeUtf8(message, findings);
  google::protobuf::util::JsonPrintOptions options;
  options.add_whitespace = in_lines;
  options.preserve_proto_field_names = true;
  std::string json;
  const auto status = google::protobuf::util::BinaryToJsonString(
      resolver_.get(), url_, message.SerializePartialAsString(), &json, options);
  if (!status.ok()) throw Error("no JSON for this message: " + status.message().ToString());
  if (json.empty() || json.back() != '\n') json += '\n';
  return json;
}

std::string Json::Parse(std::string_view json) const {
  std::string bytes;
  const auto status = google::protobuf::util::JsonToBinaryString(
      resolver_.get(), url_, google::protobuf::StringPiece(json.data(), json.size()), &bytes);
  if (!status.ok()) throw Error("JSON: " + OneLine(status.message().ToString()));
  return bytes;
}

}  // namespace virtual_modem::inspect
