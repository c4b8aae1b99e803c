// Whether a program fits the libraries that it runs with. Part of libvirtual-modem-text; link
// VirtualModemProtos::text.
//
// A program allocates messages itself and reads their members inline, so it must have been compiled
// with the headers of the libraries that it loads; only the patch number may differ (see
// docs/compatibility.md). The loader does not check: the file name has no version. So ask once, at
// start:
//
//   if (const std::string mismatch = virtual_modem::VersionMismatch(); !mismatch.empty()) {
//     std::fprintf(stderr, "%s\n", mismatch.c_str());
//     return 1;
//   }
#pragma once

#include <google/protobuf/arena.h>
#include <google/protobuf/message_lite.h>
#include <virtual_modem/message_list.h>
#include <virtual_modem/types.h>

#include <cstddef>
#include <cstdint>
#include <string>

// The version is defined only here; the build and the packages read it.
#define VIRTUAL_MODEM_VERSION_MAJOR 1
#define VIRTUAL_MODEM_VERSION_MINOR 0
#define VIRTUAL_MODEM_VERSION_PATCH 0

// One number to compare: 1002003 is 1.2.3.
#define VIRTUAL_MODEM_VERSION                                                   \
  (VIRTUAL_MODEM_VERSION_MAJOR * 1000000 + VIRTUAL_MODEM_VERSION_MINOR * 1000 + \
   VIRTUAL_MODEM_VERSION_PATCH)

// The CMake package and the pkg-config files define which version they belong to.
#if defined(VIRTUAL_MODEM_PACKAGE_VERSION) && VIRTUAL_MODEM_PACKAGE_VERSION != VIRTUAL_MODEM_VERSION
#error "<virtual_modem/version.h> is of another version than the CMake package or .pc file in use"
#endif

#pragma GCC visibility push(default)

namespace virtual_modem {

// VIRTUAL_MODEM_VERSION and VIRTUAL_MODEM_INTERFACE with which the companion library was compiled.
// The latter is a checksum of the fields of all messages, which determine their classes' layouts.
std::int32_t LibraryVersion();
std::uint32_t LibraryInterface();

// Empty if the program fits the libraries; else one line for a log that says what does not fit and
// what to do. Compares versions, the fields of the messages, and the size of each class with that
// of an object that the message library creates. Sizes are rounded up to 8 bytes. Takes about 10
// microseconds; any thread may call it.
//
// Static, so that each library and program of a process asks for itself.
static inline std::string VersionMismatch() {
  using std::to_string;
  struct Class {
    const char* name;
    std::size_t size;
  };
#define VIRTUAL_MODEM_CLASS(name, cpp_class, unit) {name, sizeof(cpp_class)},
  static constexpr Class kClasses[] = {VIRTUAL_MODEM_MESSAGES(VIRTUAL_MODEM_CLASS)};
#undef VIRTUAL_MODEM_CLASS
  const auto name = [](std::int32_t version) {
    return to_string(version / 1000000) + '.' + to_string(version / 1000 % 1000) + '.' +
           to_string(version % 1000);
  };

  const std::string header =
      "virtual-modem: compiled with the headers of " + name(VIRTUAL_MODEM_VERSION);
  const std::int32_t library = LibraryVersion();
  if (library / 1000 != VIRTUAL_MODEM_VERSION / 1000) {
    return header + ", but libvirtual-modem-text is " + name(library) + ": compile again";
  }
  google::protobuf::Arena arena;
  for (const Class& c : kClasses) {
    const Type* type = FindType(c.name);
    if (type == nullptr) return header + ": the library lacks " + c.name;
    const std::uint64_t before = arena.SpaceUsed();
    type->prototype->New(&arena);
    const std::uint64_t size = arena.SpaceUsed() - before;
    if ((c.size + 7) / 8 * 8 != size) {
      return header + ", where " + c.name + " has " + to_string(c.size) +
             " bytes, but lib-virtual-modem-protos.so has it with " + to_string(size) +
             ": install the library of " + name(VIRTUAL_MODEM_VERSION) + ", or compile again";
    }
  }
  if (LibraryInterface() != VIRTUAL_MODEM_INTERFACE) {
    return header + ", but libvirtual-modem-text has other fields: compile again";
  }
  return {};
}

}  // namespace virtual_modem

#pragma GCC visibility pop
