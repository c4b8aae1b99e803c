# Parts of the project that need packages which the library does not: ON, OFF, or AUTO, which builds
# them where the packages are and otherwise says what is missing.
#
# virtual_modem_decide_part(TESTS TITLE GROUP FOUND_VARIABLE=PACKAGE...) sets build_TESTS.
function(virtual_modem_decide_part part title group)
  set(wanted ${VIRTUAL_MODEM_${part}})
  set(missing "")
  foreach(requirement IN LISTS ARGN)
    string(REGEX MATCH "^([^=]+)=(.+)$" _ ${requirement})
    if(NOT ${CMAKE_MATCH_1})
      list(APPEND missing ${CMAKE_MATCH_2})
    endif()
  endforeach()
  list(JOIN missing ", " missing)
  if(wanted AND missing)
    set(advice "missing are ${missing} (Debian: scripts/setup ${group})")
    if(NOT wanted STREQUAL AUTO)
      message(FATAL_ERROR "VIRTUAL_MODEM_${part} is ${wanted}, but ${advice}.")
    endif()
    message(STATUS "${title}: left out, ${advice}")
    set(wanted OFF)
  endif()
  set(build_${part} ${wanted} PARENT_SCOPE)
endfunction()
