#include "support/message_types.h"

#include "virtual_modem/message_list.h"

namespace virtual_modem::testing {
namespace {

template <typename M>
MessageType Describe(std::string_view name, std::string_view unit) {
  MessageType type{name, unit, M::default_instance(), {}, {}, {}, {}, {}};
  type.copy = [](const MessageLite& from) -> std::unique_ptr<MessageLite> {
    return std::make_unique<M>(static_cast<const M&>(from));
  };
  type.create_on = [](Arena* arena) -> MessageLite* { return Arena::CreateMessage<M>(arena); };
  type.copy_from = [](MessageLite& to, const MessageLite& from) {
    static_cast<M&>(to).CopyFrom(static_cast<const M&>(from));
  };
  type.merge_from = [](MessageLite& to, const MessageLite& from) {
    static_cast<M&>(to).MergeFrom(static_cast<const M&>(from));
  };
  type.swap = [](MessageLite& left, MessageLite& right) {
    static_cast<M&>(left).Swap(&static_cast<M&>(right));
  };
  return type;
}

}  // namespace

const std::vector<MessageType>& AllMessageTypes() {
#define ENTRY(name, cpp_class, unit) Describe<cpp_class>(name, #unit),
  static const std::vector<MessageType> types{VIRTUAL_MODEM_MESSAGES(ENTRY)};
#undef ENTRY
  return types;
}

const MessageType* FindMessageType(std::string_view name) {
  for (const MessageType& type : AllMessageTypes()) {
    if (type.name == name) return &type;
  }
  return nullptr;
}

}  // namespace virtual_modem::testing
