// The installed schema at run time: message types and enumerations by name, their comments, and
// messages of types that this program was not compiled with.
#pragma once

#include <google/protobuf/descriptor.h>
#include <google/protobuf/dynamic_message.h>
#include <google/protobuf/message.h>

#include <cstddef>
#include <memory>
#include <sstream>
#include <string>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "text/tables.h"

namespace virtual_modem::inspect {

using google::protobuf::Descriptor;
using google::protobuf::EnumDescriptor;
using google::protobuf::FieldDescriptor;
using google::protobuf::Message;

// What the traffic of messages is read by.
struct TypeInfo {
  const Descriptor* type;
  unsigned index;  // in the tables
  std::string unit;
  std::string_view kind;         // request, response, indication or record
  int serial;                    // number of the field of that name, 0 when there is none
  const FieldDescriptor* error;  // null when there is none
};

class Schema {
 public:
  // Reads a FileDescriptorSet, and the list of subscriber data beside it when there is one.
  // Throws Error when the set cannot be read.
  explicit Schema(const std::string& descriptor_set);

  // In the order of declaration, unit by unit: the messages, the fields of all of them, the
  // enumerations.
  const std::vector<TypeInfo>& types() const { return types_; }
  const std::vector<const FieldDescriptor*>& fields() const { return fields_; }
  const std::vector<const EnumDescriptor*>& enums() const { return enums_; }
  const text::Tables& tables() const { return *tables_; }

  // A message by its full name or, where that is unique, without its package; null when there is
  // none.
  const TypeInfo* FindType(std::string_view name) const;
  // The same, but throws Error with the nearest names.
  const TypeInfo& GetType(std::string_view name) const;
  const EnumDescriptor* FindEnum(std::string_view name) const;

  std::unique_ptr<Message> NewMessage(const Descriptor& type) const;
  // A message of the type at that index to parse into, which may hold what was parsed before.
  Message& Scratch(unsigned index);

  // Whether the field holds what identifies a subscriber or what a subscriber says.
  bool IsSubscriberData(const FieldDescriptor& field) const {
    return subscriber_data_.count(&field) != 0;
  }
  // Throws Error when the schema says of no field that it is subscriber data: nothing could be
  // masked then.
  void RequireSubscriberData() const;

 private:
  void ReadSubscriberData(const std::string& path);
  void AddType(const Descriptor& type);

  google::protobuf::DescriptorPool pool_;
  mutable google::protobuf::DynamicMessageFactory factory_{&pool_};
  std::vector<TypeInfo> types_;
  std::vector<const FieldDescriptor*> fields_;
  std::vector<const EnumDescriptor*> enums_;
  std::unordered_map<std::string_view, std::size_t> types_by_name_;  // with and without package
  std::shared_ptr<const text::Tables> tables_;
  std::vector<std::unique_ptr<Message>> scratch_;  // by index
  std::unordered_set<const FieldDescriptor*> subscriber_data_;
};

// The tables of the walk over encoded bytes, for the schema's messages. Throws Error for a field of
// a type that the messages of a virtual modem do not use.
std::shared_ptr<const text::Tables> MakeTables(const Schema& schema);

// Where the descriptor set is: the environment variable VIRTUAL_MODEM_DESCRIPTOR_SET, else the data
// folder of the tree that the running program is installed (or built) in.
std::string DefaultDescriptorSet();

// The comment of a declaration as one line.
template <typename Declaration>
std::string Comment(const Declaration& declaration) {
  google::protobuf::SourceLocation location;
  if (!declaration.GetSourceLocation(&location)) return "";
  std::istringstream words(location.leading_comments + " " + location.trailing_comments);
  std::string comment;
  std::string word;
  while (words >> word) comment += (comment.empty() ? "" : " ") + word;
  return comment;
}

// The unit of a declaration, such as "radio".
std::string UnitOf(const google::protobuf::FileDescriptor& file);

// The field that a path such as "calls.number" leads to from the message on; null for none.
const FieldDescriptor* FindField(const Descriptor& type, const std::string& path);

// "required", "repeated" or "optional".
const char* LabelOf(const FieldDescriptor& field);

// Such as "int32" or "UusInfo".
std::string TypeOf(const FieldDescriptor& field);

// Two types with identical layouts read and write the same bytes alike.
bool SameLayout(const Descriptor& left, const Descriptor& right);

std::string Lower(std::string_view text);

// "; did you mean A, B or C?" of the names that look most like the one given, or nothing.
std::string DidYouMean(std::string_view name, const std::vector<std::string>& names);

}  // namespace virtual_modem::inspect
