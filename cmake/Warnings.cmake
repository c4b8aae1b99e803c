# Strict warnings for hand-written code. Generated code is not ours to mend, so the library itself
# does not link this target.
option(VIRTUAL_MODEM_WERROR "Treat warnings as errors; CI sets it in the environment"
  "$ENV{VIRTUAL_MODEM_WERROR}")
add_library(virtual-modem-warnings INTERFACE)
target_compile_options(virtual-modem-warnings INTERFACE
  -Wall -Wextra $<$<BOOL:${VIRTUAL_MODEM_WERROR}>:-Werror>)
