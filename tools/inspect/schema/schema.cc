#include "inspect/schema/schema.h"

#include <google/protobuf/descriptor.pb.h>

#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <numeric>
#include <set>
#include <system_error>
#include <utility>

#include "inspect/error.h"

namespace virtual_modem::inspect {
namespace {

using google::protobuf::FileDescriptor;

// Keeps the pool from logging: the user gets one line about a bad descriptor set.
struct FirstError : google::protobuf::DescriptorPool::ErrorCollector {
  void AddError(const std::string& file, const std::string& element, const Message* /*part*/,
                ErrorLocation /*location*/, const std::string& message) override {
    if (text.empty()) text.append(file).append(": ").append(element).append(": ").append(message);
  }
  std::string text;
};

// Levenshtein distance.
std::size_t EditDistance(std::string_view a, std::string_view b) {
  std::vector<std::size_t> row(b.size() + 1);
  std::iota(row.begin(), row.end(), 0);
  for (std::size_t i = 0; i < a.size(); ++i) {
    std::size_t diagonal = row[0]++;
    for (std::size_t j = 0; j < b.size(); ++j) {
      const std::size_t substituted = diagonal + (a[i] == b[j] ? 0 : 1);
      diagonal = row[j + 1];
      row[j + 1] = std::min({substituted, row[j] + 1, diagonal + 1});
    }
  }
  return row.back();
}

}  // namespace

Schema::Schema(const std::string& descriptor_set) {
  std::ifstream in(descriptor_set, std::ios::binary);
  if (!in) {
    throw Error("cannot read the descriptor set " + descriptor_set +
                "; name it with --schema or VIRTUAL_MODEM_DESCRIPTOR_SET");
  }
  google::protobuf::FileDescriptorSet files;
  if (!files.ParseFromIstream(&in) || files.file().empty()) {
    throw Error(descriptor_set + " is not a descriptor set");
  }
  FirstError errors;
  for (const auto& file_proto : files.file()) {
    const FileDescriptor* file = pool_.BuildFileCollectingErrors(file_proto, &errors);
    if (file == nullptr) throw Error(descriptor_set + ": " + errors.text);
    for (int i = 0; i < file->message_type_count(); ++i) AddType(*file->message_type(i));
    for (int i = 0; i < file->enum_type_count(); ++i) enums_.push_back(file->enum_type(i));
  }
  ReadSubscriberData(
      std::filesystem::path(descriptor_set).replace_filename("subscriber_data.txt").string());
  tables_ = MakeTables(*this);
  scratch_.resize(types_.size());
}

void Schema::AddType(const Descriptor& type) {
  const FieldDescriptor* serial = type.FindFieldByName("serial");
  const FieldDescriptor* error = type.FindFieldByName("error");
  // The first word of the comment says the kind. Sets without comments leave it to the fields.
  std::string_view kind = serial == nullptr ? "indication" : "request";
  if (serial != nullptr && error != nullptr) kind = "response";
  const std::string comment = Comment(type);
  for (const std::string_view each : {"request", "response", "indication", "record"}) {
    if (Lower(comment.substr(0, each.size())) == each) kind = each;
  }
  const std::size_t index = types_.size();
  types_.push_back({&type, static_cast<unsigned>(index), UnitOf(*type.file()), kind,
                    serial == nullptr ? 0 : serial->number(), error});
  types_by_name_[type.full_name()] = index;
  types_by_name_.emplace(type.name(), index);
  for (int i = 0; i < type.field_count(); ++i) fields_.push_back(type.field(i));
}

void Schema::ReadSubscriberData(const std::string& path) {
  std::ifstream in(path);
  std::string line;
  for (int number = 1; std::getline(in, line); ++number) {
    line.erase(std::min(line.find('#'), line.size()));
    line.erase(line.find_last_not_of(" \t\r") + 1);
    if (line.empty()) continue;
    const FieldDescriptor* field = pool_.FindFieldByName(line);
    if (field == nullptr) {
      line.insert(0, path + " line " + std::to_string(number) + ": no field is named ");
      throw Error(line);
    }
    subscriber_data_.insert(field);
  }
}

const TypeInfo& Schema::GetType(std::string_view name) const {
  if (const TypeInfo* found = FindType(name)) return *found;
  std::vector<std::string> names;
  for (const TypeInfo& each : types_) names.push_back(each.type->name());
  throw Error("there is no message " + std::string(name) + DidYouMean(name, names));
}

const TypeInfo* Schema::FindType(std::string_view name) const {
  const auto found = types_by_name_.find(name);
  return found == types_by_name_.end() ? nullptr : &types_[found->second];
}

const EnumDescriptor* Schema::FindEnum(std::string_view name) const {
  for (const EnumDescriptor* type : enums_) {
    if (type->full_name() == name || type->name() == name) return type;
  }
  return nullptr;
}

std::unique_ptr<Message> Schema::NewMessage(const Descriptor& type) const {
  return std::unique_ptr<Message>(factory_.GetPrototype(&type)->New());
}

Message& Schema::Scratch(unsigned index) {
  if (!scratch_[index]) scratch_[index] = NewMessage(*types_[index].type);
  return *scratch_[index];
}

void Schema::RequireSubscriberData() const {
  if (!subscriber_data_.empty()) return;
  throw Error("there is no subscriber_data.txt beside the descriptor set: nothing can be masked");
}

std::string DefaultDescriptorSet() {
  const char* named = std::getenv("VIRTUAL_MODEM_DESCRIPTOR_SET");
  if (named != nullptr && *named != '\0') return named;
  std::error_code ignored;
  const auto program = std::filesystem::read_symlink("/proc/self/exe", ignored);
  return (program.parent_path() / VIRTUAL_MODEM_DESCRIPTOR_SET_FROM_PROGRAM)
      .lexically_normal()
      .string();
}

std::string UnitOf(const FileDescriptor& file) {
  return std::filesystem::path(file.name()).stem().string();
}

const FieldDescriptor* FindField(const Descriptor& type, const std::string& path) {
  const Descriptor* at = &type;
  const FieldDescriptor* field = nullptr;
  std::istringstream steps(path);
  for (std::string step; std::getline(steps, step, '.');) {
    field = at != nullptr ? at->FindFieldByName(step) : nullptr;
    if (field == nullptr) return nullptr;
    at = field->message_type();
  }
  return field;
}

const char* LabelOf(const FieldDescriptor& field) {
  if (field.is_required()) return "required";
  return field.is_repeated() ? "repeated" : "optional";
}

std::string TypeOf(const FieldDescriptor& field) {
  if (field.message_type() != nullptr) return field.message_type()->full_name();
  if (field.enum_type() != nullptr) return field.enum_type()->full_name();
  return field.type_name();
}

bool SameLayout(const Descriptor& left, const Descriptor& right) {
  if (&left == &right) return true;
  if (left.field_count() != right.field_count()) return false;
  for (int i = 0; i < left.field_count(); ++i) {
    const FieldDescriptor& a = *left.field(i);
    const FieldDescriptor* b = right.FindFieldByNumber(a.number());
    if (b == nullptr || a.type() != b->type() || a.label() != b->label() ||
        a.enum_type() != b->enum_type()) {
      return false;
    }
    if (a.message_type() != nullptr && !SameLayout(*a.message_type(), *b->message_type())) {
      return false;
    }
  }
  return true;
}

std::string Lower(std::string_view text) {
  std::string lower(text);
  for (char& c : lower) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  return lower;
}

std::string DidYouMean(std::string_view name, const std::vector<std::string>& names) {
  const std::string wanted = Lower(name);
  std::set<std::pair<std::size_t, std::string>> near;
  for (const std::string& candidate : names) {
    const std::string lower = Lower(candidate);
    std::size_t distance = EditDistance(wanted, lower);
    // A part of a name is nearer than its length tells.
    if (wanted.size() >= 3 && lower.find(wanted) != std::string::npos) {
      distance = 1 + distance / 10;
    }
    if (distance > (wanted.size() < 4 ? 1 : 1 + wanted.size() / 3)) continue;
    near.emplace(distance, candidate);
    if (near.size() > 3) near.erase(std::prev(near.end()));
  }
  std::string text;
  for (auto each = near.begin(); each != near.end(); ++each) {
    text += each == near.begin()            ? "; did you mean "
            : std::next(each) == near.end() ? " or "
                                            : ", ";
    text += each->second;
  }
  return text + (text.empty() ? "" : "?");
}

}  // namespace virtual_modem::inspect
