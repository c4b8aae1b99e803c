# Strict warnings for hand-written code. Generated code is not ours to mend, so the library itself
# does not link this target.
add_library(virtual-modem-warnings INTERFACE)
target_compile_options(virtual-modem-warnings INTERFACE -Wall -Wextra -Werror)
