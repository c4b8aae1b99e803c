// Messages as JSON and back, by the runtime's mapping with the schema's own field names.
#pragma once

#include <google/protobuf/message.h>
#include <google/protobuf/util/type_resolver.h>

#include <memory>
#include <string>
#include <string_view>

#include "inspect/findings.h"
#include "inspect/schema.h"

namespace virtual_modem::inspect {

class Json {
 public:
  // For messages of the type's schema, which must outlive this.
  explicit Json(const Descriptor& type);

  // JSON is UTF-8 where strings of the schema are any bytes: each byte that does not fit is shown
  // as "?", and a finding names the field. Changes the message so.
  std::string Print(Message& message, bool in_lines, Findings& findings) const;

  // The encoded form of the message, required fields present or not. Throws Error.
  std::string Parse(std::string_view json) const;

 private:
  std::unique_ptr<google::protobuf::util::TypeResolver> resolver_;
  std::string url_;
};

}  // namespace virtual_modem::inspect
