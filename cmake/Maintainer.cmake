# Who answers for a release: the packages, their changelog and the wheel name them.

set(VIRTUAL_MODEM_MAINTAINER "Virtual Modem maintainers <maintainers@virtual-modem.example>"
  CACHE STRING "Maintainer that packages and wheel name: NAME <ADDRESS>")
if(NOT VIRTUAL_MODEM_MAINTAINER MATCHES
    "^([^<>\"\\\\\n ][^<>\"\\\\\n]*) <([^<>\"\\\\\n @]+@[^<>\"\\\\\n @]+)>$")
  message(FATAL_ERROR "VIRTUAL_MODEM_MAINTAINER is '${VIRTUAL_MODEM_MAINTAINER}'; it must be a name and "
    "an address: NAME <USER@HOST>.")
endif()
set(VIRTUAL_MODEM_MAINTAINER_NAME ${CMAKE_MATCH_1})
set(VIRTUAL_MODEM_MAINTAINER_ADDRESS ${CMAKE_MATCH_2})
