// A program compiled with headers in which a class is OTHER_BYTES larger than in the library; with
// 0, in which the fields are others.
#include <virtual_modem/types.h>

#include <cstdio>
#include <string>

namespace {
struct OtherDial {
  char bytes[static_cast<int>(sizeof(Dial)) + OTHER_BYTES];
};
}  // namespace

#undef VIRTUAL_MODEM_MESSAGES
#define VIRTUAL_MODEM_MESSAGES(X) X("Call", ::Call, radio) X("Dial", OtherDial, radio)
constexpr unsigned kInterface = VIRTUAL_MODEM_INTERFACE;
#undef VIRTUAL_MODEM_INTERFACE
#define VIRTUAL_MODEM_INTERFACE (kInterface + 1)
#include <virtual_modem/version.h>

int main() {
  const std::string said = virtual_modem::VersionMismatch();
  const std::string expected = OTHER_BYTES == 0
                                   ? "but libvirtual-modem-text has other fields: compile again"
                                   : "where Dial has " + std::to_string(sizeof(OtherDial)) +
                                         " bytes, but lib-virtual-modem-protos.so has it with " +
                                         std::to_string(sizeof(Dial)) + ": install the library of ";
  std::printf("%s\n", said.c_str());
  return said.find(", " + expected) == std::string::npos ? 1 : 0;
}
