#include "call_exchange/visit.h"

namespace virtual_modem::exchange {

const MessageLite* FindPrototype(std::string_view type) {
#define ENTRY(name, cpp_class, unit) {name, &cpp_class::default_instance()},
  static const std::unordered_map<std::string_view, const MessageLite*> prototypes{
      VIRTUAL_MODEM_MESSAGES(ENTRY)};
#undef ENTRY
  const auto found = prototypes.find(type);
  return found == prototypes.end() ? nullptr : found->second;
}

}  // namespace virtual_modem::exchange
