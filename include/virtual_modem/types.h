// The message types of the library as data: by name, by message, in order. Part of
// libvirtual-modem-text; link VirtualModemProtos::text.
//
// Any thread may call any function at any time. No function throws or needs RTTI, and only Parse()
// and AppendFrame() allocate.
#pragma once

#ifdef _GLIBCXX_DEBUG
#error "_GLIBCXX_DEBUG changes the containers that this library shares: use _GLIBCXX_ASSERTIONS"
#endif

#include <google/protobuf/message_lite.h>
#include <virtual_modem/frame.h>
#include <virtual_modem/message_list.h>

#include <cstddef>
#include <cstdint>
#include <limits>
#include <memory>
#include <new>
#include <optional>
#include <string>
#include <string_view>
#include <type_traits>
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

// The type with that full name, such as "Dial" or "virtualdata.proto.SlaveSetupDataCallRequest";
// null if there is none. A binary search.
const Type* FindType(std::string_view name);

// The type of a message, found without its name (some nanoseconds). For a message of another
// library, name and unit are "" and the prototype is null.
const Type& TypeOf(const google::protobuf::MessageLite& message);

// The serial of a request or response; nothing if it is absent or the type has none.
std::optional<std::int32_t> SerialOf(const google::protobuf::MessageLite& message);

// The type of a class of the library.
template <typename T>
const Type& TypeOf() {
  return TypeOf(T::default_instance());
}

namespace internal {
// Keeps the compiler from warning about a cast to another class in a branch that the object at hand
// never takes.
template <typename T, typename Base>
T* Cast(Base& message) {
  return std::launder(static_cast<T*>(&message));
}
}  // namespace internal

// The message as its class, such as As<Dial>(message); null if it is of another class.
template <typename T>
const T* As(const google::protobuf::MessageLite& message) {
  if (TypeOf(message).prototype != &T::default_instance()) return nullptr;
  return internal::Cast<const T>(message);
}
template <typename T>
T* As(google::protobuf::MessageLite& message) {
  return const_cast<T*>(As<T>(std::as_const(message)));
}

// Appends the frame of a message, which may lack required fields. False, and nothing appended, for
// a message of another library or of 2 GiB or more.
inline bool AppendFrame(const google::protobuf::MessageLite& message, std::uint8_t operation,
                        std::string& out) {
  const std::size_t begin = out.size();
  if (!AppendFrame({operation, TypeOf(message).name, {}}, out)) return false;
  const std::size_t end_of_name = out.size();
  if (!message.AppendPartialToString(&out)) {
    out.resize(begin);
    return false;
  }
  const std::size_t size = out.size() - end_of_name;
  for (unsigned i = 0; i < 4; ++i) out[begin + 7 - i] = static_cast<char>(size >> (8 * i));
  return true;
}

// The result of Parse().
struct Parsed {
  const Type* type = nullptr;  // null if the library has none of that name
  // Null without a type. If the bytes break, the content before the break.
  std::unique_ptr<google::protobuf::MessageLite> message;
  bool whole = false;  // the bytes did not break

  explicit operator bool() const { return whole; }
};

// A new message of the type with that full name, parsed from bytes. Writes nothing to stderr.
// Required fields may be absent: call MissingFields() of <virtual_modem/text.h> next, or
// IsInitialized().
inline Parsed Parse(std::string_view name, std::string_view bytes) {
  Parsed parsed;
  parsed.type = FindType(name);
  if (parsed.type == nullptr) return parsed;
  parsed.message.reset(parsed.type->prototype->New());
  parsed.whole =
      bytes.size() <= static_cast<std::size_t>(std::numeric_limits<int>::max()) &&
      parsed.message->ParsePartialFromArray(bytes.data(), static_cast<int>(bytes.size()));
  return parsed;
}

namespace internal {

using google::protobuf::MessageLite;

template <typename... T>
struct Classes {};
#define VIRTUAL_MODEM_CLASS(name, cpp_class, unit) , cpp_class
template <typename, typename... T>
struct AllClasses {
  using List = Classes<T...>;
};
using Messages = AllClasses<void VIRTUAL_MODEM_MESSAGES(VIRTUAL_MODEM_CLASS)>::List;
#undef VIRTUAL_MODEM_CLASS

// The visitor with its overloads for MessageLite replaced: a class for which one of these is chosen
// has no overload in the visitor.
struct Rest {};
template <typename Visitor, bool = std::is_class_v<Visitor> && !std::is_final_v<Visitor>>
struct Probe : Visitor {
  using Visitor::operator();
  Rest operator()(const MessageLite&) const;
  Rest operator()(MessageLite&) const;
};
template <typename Visitor>
struct Probe<Visitor, false> {};

// What a visitor returns: the type that all of its calls return, else void.
template <typename R>
struct Returns {
  using Type = R;
};
template <>
struct Returns<Rest> {
  using Type = void;
};
template <typename R>
Returns<R> operator+(Returns<Rest>, Returns<R>);
template <typename R>
Returns<R> operator+(Returns<R>, Returns<Rest>);
Returns<Rest> operator+(Returns<Rest>, Returns<Rest>);
template <typename R>
Returns<R> operator+(Returns<R>, Returns<R>);
template <typename R, typename S>
Returns<void> operator+(Returns<R>, Returns<S>);

template <typename Base, typename Visitor, typename List>
class Visiting;
template <typename Base, typename Visitor, typename... T>
class Visiting<Base, Visitor, Classes<T...>> {
  template <typename M>
  using As = std::conditional_t<std::is_const_v<Base>, const M, M>&;
  template <typename M>
  static constexpr bool kTaken = std::is_invocable_v<Visitor&, As<M>>;

  // M is taken by an overload for every message.
  template <typename M>
  static constexpr bool IsRest() {
    using Probing = Probe<std::remove_cv_t<Visitor>>&;
    if constexpr (kTaken<M> && std::is_invocable_v<Probing, As<M>>) {
      if constexpr (std::is_same_v<std::invoke_result_t<Probing, As<M>>, Rest>) {
        return std::is_invocable_v<Visitor&, Base&>;
      }
    }
    return false;
  }
  template <typename M>
  static constexpr bool kHasOverload = kTaken<M> && !IsRest<M>();

  static constexpr bool kTakesRest = (... || IsRest<T>());
  static_assert(kTakesRest || (... || kHasOverload<T>),
                "the visitor takes no message of the library");

  template <typename M>
  static auto ResultOf() {
    if constexpr (kTaken<M>) {
      return Returns<std::decay_t<std::invoke_result_t<Visitor&, As<M>>>>();
    } else {
      return Returns<Rest>();
    }
  }
  using Result = typename decltype((Returns<Rest>() + ... + ResultOf<T>()))::Type;

 public:
  using Answer = std::conditional_t<std::is_void_v<Result>, bool, std::optional<Result>>;

  static Answer Run(Base& message, Visitor& visitor) {
    const Type& type = TypeOf(message);
    Answer answer{};
    if (type.prototype == nullptr) return answer;
    // Compilers make a jump of the comparisons.
    const auto index = static_cast<std::size_t>(&type - Types().begin());
    std::size_t next = 0;
    bool called = (... || CallIf<T>(index == next++, message, visitor, answer));
    if constexpr (kTakesRest) {
      if (!called) Call<Base>(message, visitor, answer);
      called = true;
    }
    if constexpr (std::is_void_v<Result>) answer = called;
    return answer;
  }

 private:
  template <typename M>
  static void Call(Base& message, Visitor& visitor, [[maybe_unused]] Answer& answer) {
    if constexpr (std::is_void_v<Result>) {
      static_cast<void>(visitor(*Cast<std::remove_reference_t<As<M>>>(message)));
    } else {
      answer.emplace(visitor(*Cast<std::remove_reference_t<As<M>>>(message)));
    }
  }
  template <typename M>
  static bool CallIf(bool is_m, Base& message, Visitor& visitor, Answer& answer) {
    if constexpr (kHasOverload<M>) {
      if (!is_m) return false;
      Call<M>(message, visitor, answer);
      return true;
    } else {
      return false;
    }
  }
};

}  // namespace internal

// Calls visitor(m), where m is the message as its own class, mutable if the message is. The visitor
// overloads operator() for the classes it handles; other messages go to its overload for const
// MessageLite& or its template, or nowhere if it has neither. For a mutable message, an auto& would
// be chosen before a const Dial&: write const auto&.
//
// Returns what the visitor returns, as std::optional: nothing if it was not called, as for a
// message of another library. For visitors that return void, or different types, Visit() returns a
// bool: whether the visitor was called.
//
// Costs a look-up, and a jump or some comparisons.
template <typename Visitor>
auto Visit(const google::protobuf::MessageLite& message, Visitor&& visitor) {
  using Visiting = internal::Visiting<const google::protobuf::MessageLite,
                                      std::remove_reference_t<Visitor>, internal::Messages>;
  return Visiting::Run(message, visitor);
}
template <typename Visitor>
auto Visit(google::protobuf::MessageLite& message, Visitor&& visitor) {
  using Visiting = internal::Visiting<google::protobuf::MessageLite,
                                      std::remove_reference_t<Visitor>, internal::Messages>;
  return Visiting::Run(message, visitor);
}

}  // namespace virtual_modem

#pragma GCC visibility pop
