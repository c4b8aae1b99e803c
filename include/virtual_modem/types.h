// The message types of the library as data: by name, by message, in order. Part of
// libvirtual-modem-text; link VirtualModemProtos::text.
//
// Everything here is constant or computed from it: any thread may call any function at any time.
// Nothing allocates, throws or needs RTTI.
#pragma once

#include <google/protobuf/message_lite.h>
#include <virtual_modem/message_list.h>

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>
#include <utility>

#pragma GCC visibility push(default)

namespace virtual_modem {

// What a message is for.
enum class Kind : std::uint8_t {
  kRequest,     // asks for an operation
  kResponse,    // answers a request
  kIndication,  // reports on its own
  kRecord,      // is carried by other messages
};

// "request", "response", "indication" or "record".
const char* KindName(Kind kind);

struct Type {
  const char* name;  // as GetTypeName() returns it, such as "Dial"
  const char* unit;  // of the schema, such as "radio": the header is <virtual_modem/radio.pb.h>
  Kind kind;
  const google::protobuf::MessageLite* prototype;  // the default instance; New() makes another
  bool has_serial;                                 // has a field serial
  bool has_error;                                  // has a field error
};

// All types, unit by unit in the order of their declaration.
class TypeList {
 public:
  constexpr TypeList(const Type* first, std::size_t size) : first_(first), size_(size) {}

  constexpr const Type* begin() const { return first_; }
  constexpr const Type* end() const { return first_ + size_; }
  constexpr std::size_t size() const { return size_; }
  constexpr const Type& operator[](std::size_t index) const { return first_[index]; }

 private:
  const Type* first_;
  std::size_t size_;
};
TypeList Types();

// The type of that full name, such as "Dial" or "virtualdata.proto.SlaveSetupDataCallRequest"; null
// when there is none. A binary search.
const Type* FindType(std::string_view name);

// The type of a message, without a look at its name (some nanoseconds). A message of another
// library has the type whose name and unit are "" and whose prototype is null.
const Type& TypeOf(const google::protobuf::MessageLite& message);

// The serial of a request or response; nothing when it is absent, and for types without one.
std::optional<std::int32_t> SerialOf(const google::protobuf::MessageLite& message);

// Calls visitor(m), m being the message as its own class, const: the visitor overloads operator()
// for the types it knows and has a template for the rest. False, without a call, for a message of
// another library. A look-up and a call through a pointer.
template <typename Visitor>
bool Visit(const google::protobuf::MessageLite& message, Visitor&& visitor) {
  using Call = void (*)(Visitor&, const google::protobuf::MessageLite&);
#define VIRTUAL_MODEM_VISIT(name, cpp_class, unit)                      \
  [](Visitor& target, const google::protobuf::MessageLite& base) {      \
    std::forward<Visitor>(target)(static_cast<const cpp_class&>(base)); \
  },
  static constexpr Call kCalls[] = {VIRTUAL_MODEM_MESSAGES(VIRTUAL_MODEM_VISIT)};
#undef VIRTUAL_MODEM_VISIT
  const Type& type = TypeOf(message);
  if (type.prototype == nullptr) return false;
  kCalls[&type - Types().begin()](visitor, message);
  return true;
}

}  // namespace virtual_modem

#pragma GCC visibility pop
