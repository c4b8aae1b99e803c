#include "inspect/examine/redact.h"

#include "text/mask.h"

namespace virtual_modem::inspect {

std::string Redact(const Schema& schema, const Descriptor& type, std::string_view bytes,
                   bool shape) {
  std::string masked;
  text::AppendMasked(schema.tables(), schema.IndexOf(type), bytes,
                     shape ? text::Show::kShape : text::Show::kMasked, masked);
  return masked;
}

void Redact(const Schema& schema, Message& message) {
  message.ParsePartialFromString(
      Redact(schema, *message.GetDescriptor(), message.SerializePartialAsString()));
}

}  // namespace virtual_modem::inspect
