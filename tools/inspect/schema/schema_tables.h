// The tables of the walk over encoded bytes, filled from the schema at run time.
#pragma once

#include <google/protobuf/descriptor.h>

#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "text/tables.h"

namespace virtual_modem::inspect {

// Requires that the pool of the descriptors outlives it.
class SchemaTables {
 public:
  // A message has the index in the tables that it has here. Throws Error for a field of a type that
  // the messages of a virtual modem do not use.
  void Fill(const std::vector<const google::protobuf::Descriptor*>& messages,
            const std::unordered_set<const google::protobuf::FieldDescriptor*>& subscriber_data);

  const text::Tables& tables() const { return tables_; }
  unsigned IndexOf(const google::protobuf::Descriptor& type) const { return indexes_.at(&type); }

 private:
  static std::string_view NameOf(const void* context, unsigned enumeration, std::int32_t number);
  text::Field MakeField(const google::protobuf::FieldDescriptor& field);
  std::uint16_t Place(const std::string& name);
  std::uint16_t PlaceEnum(const google::protobuf::EnumDescriptor& type);

  std::vector<text::Message> messages_;
  std::vector<text::Field> fields_;
  std::vector<text::SparseNumber> sparse_;
  std::string names_;
  std::vector<const google::protobuf::EnumDescriptor*> enums_;
  // The names of the numbers from 0 of each: most values are small, and the runtime searches for
  // them.
  std::vector<std::vector<std::string_view>> small_names_;
  std::unordered_map<const google::protobuf::Descriptor*, unsigned> indexes_;
  std::unordered_map<const google::protobuf::EnumDescriptor*, std::uint16_t> enum_indexes_;
  std::unordered_map<std::string, std::uint16_t> places_;
  text::Tables tables_{};
};

}  // namespace virtual_modem::inspect
