#include <virtual_modem/version.h>

namespace virtual_modem {

std::int32_t LibraryVersion() { return VIRTUAL_MODEM_VERSION; }

std::uint32_t LibraryInterface() { return VIRTUAL_MODEM_INTERFACE; }

}  // namespace virtual_modem
