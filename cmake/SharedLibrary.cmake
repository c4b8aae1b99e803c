# Code generation for the library, and for the runtime when that is built from source: one place, so
# that both sides of the boundary between them are compiled alike.
#
# What each flag is worth is the median of scripts/bench and scripts/footprint with and without it,
# on x86-64 with g++ 12: time of encode and decode over the four messages of docs/performance.md,
# dlopen with all symbols bound, stripped size. bench/README.md lists rejected options.
include(CheckCXXSourceCompiles)
include(CheckLinkerFlag)

# The loader must know them, which glibc does since 2.36. Leave them out of a library that is taken to
# an older system than the one it is linked on.
option(VIRTUAL_MODEM_PACK_RELOCATIONS
  "Pack relocations as glibc 2.36 and newer read them (not used when cross compiling)" ON)
if(VIRTUAL_MODEM_PACK_RELOCATIONS AND NOT CMAKE_CROSSCOMPILING)
  check_cxx_source_compiles("#include <features.h>
#if !__GLIBC_PREREQ(2, 36)
#error
#endif
int main() {}" VIRTUAL_MODEM_LOADER_UNPACKS_RELOCATIONS)
  check_linker_flag(CXX LINKER:-z,pack-relative-relocs VIRTUAL_MODEM_CAN_PACK_RELOCATIONS)
endif()

function(virtual_modem_tune_shared_library target)
  # Inline functions stay inside: the exports are the contract and no more (size -4 %).
  target_compile_options(${target} PRIVATE -fvisibility-inlines-hidden)
  # Calls inside the library go straight to their function, not through the PLT, and are inlined
  # (dlopen -67 %, size -4 %). Functions only: with plain -Bsymbolic an executable's copy
  # relocation would give two copies of a default instance.
  target_link_options(${target} PRIVATE LINKER:-Bsymbolic-functions)
  # The functions of the runtime that are called are bound at load: no slower to load, no lookup at
  # the first call, and the table of addresses is read-only afterwards.
  target_link_options(${target} PRIVATE LINKER:-z,relro,-z,now)
  # No second hash table of symbols in the old form, which clang would add (size -2 %), and a smaller one.
  target_link_options(${target} PRIVATE LINKER:-O1,--hash-style=gnu)
  # The compiler may assume no function is interposed (time -6 %). Only in builds that are shipped;
  # sanitizers and debuggers see the code as written.
  target_compile_options(${target} PRIVATE
    $<$<CONFIG:Release,MinSizeRel>:-fno-semantic-interposition>)
  # Calls into the runtime and the C library go through the table of addresses and not through a stub
  # as well (time -2.5 %, decoding a list of calls -17 %). Elsewhere than on x86-64 the stub is the
  # shorter code.
  if(CMAKE_SYSTEM_PROCESSOR STREQUAL "x86_64")
    target_compile_options(${target} PRIVATE $<$<CONFIG:Release,MinSizeRel>:-fno-plt>)
    # With a runtime that is built from source, functions begin where the processor fetches: together
    # with -O3 for its hot units and the linker's -O1, time -5 %. With Debian's, encoding slows down.
    if(VIRTUAL_MODEM_RUNTIME STREQUAL "source")
      target_compile_options(${target} PRIVATE $<$<CONFIG:Release>:-falign-functions=32>)
    endif()
  endif()
  # Relocations that only add the load address take a bit each, not 24 bytes (size -3 %). A cross
  # build's own linker flags decide for its target.
  if(VIRTUAL_MODEM_LOADER_UNPACKS_RELOCATIONS AND VIRTUAL_MODEM_CAN_PACK_RELOCATIONS)
    target_link_options(${target} PRIVATE LINKER:-z,pack-relative-relocs)
  endif()

  # What no library defines fails this link, not the one of a caller. clang's sanitizers define their
  # entry points in the executable only.
  if(NOT CMAKE_CXX_FLAGS MATCHES "-fsanitize")
    target_link_options(${target} PRIVATE LINKER:-z,defs)
  endif()

  if(VIRTUAL_MODEM_DEVICE)
    virtual_modem_platform_flags(${target})
  endif()
endfunction()
