# Code generation for the library, and for the runtime when that is built from source: one place, so
# that both sides of the boundary between them are compiled alike.
#
# What each flag is worth is the median of scripts/bench and scripts/footprint with and without it,
# on x86-64 with g++ 12: time of encode and decode over the four messages of docs/performance.md,
# dlopen with all symbols bound, stripped size. That page also tells what was tried and is not here.
include(CheckLinkerFlag)

function(virtual_modem_tune_shared_library target)
  # Inline functions stay inside: the exports are the contract and no more (size -4 %).
  target_compile_options(${target} PRIVATE -fvisibility-inlines-hidden)
  # Calls inside the library go straight to their function, not through the PLT, and are inlined
  # (dlopen -67 %, size -4 %). Functions only: with plain -Bsymbolic an executable's copy
  # relocation would give two copies of a default instance.
  target_link_options(${target} PRIVATE LINKER:-Bsymbolic-functions)

  # The rest is for builds that are shipped; sanitizers and debuggers see the code as written.
  if(NOT CMAKE_BUILD_TYPE MATCHES "^(Release|MinSizeRel)$")
    return()
  endif()
  # The compiler may take it that nobody replaces a function of the library (time -6 %).
  target_compile_options(${target} PRIVATE -fno-semantic-interposition)
  # The hot loops do not move when code before them grows or shrinks (time -2 %, size +2.5 %).
  # Android's build is for size.
  if(NOT ANDROID)
    target_compile_options(${target} PRIVATE -falign-functions=32)
  endif()
  # Calls into the runtime and the C library go through the table of addresses and not through a stub
  # as well (time -1.5 %, with the runtime built from source -3.5 %). Elsewhere than on x86-64 the
  # stub is the shorter code.
  if(CMAKE_SYSTEM_PROCESSOR STREQUAL "x86_64")
    target_compile_options(${target} PRIVATE -fno-plt)
  endif()
  # A smaller hash table of symbols (size -0.5 %), and not a second one in the old form, which clang
  # would add (size -2 %).
  target_link_options(${target} PRIVATE LINKER:-O1 LINKER:--hash-style=gnu)
  # The functions of the runtime that are called are bound at load: no slower to load, no lookup at
  # the first call, and the table of addresses is read-only afterwards.
  target_link_options(${target} PRIVATE LINKER:-z,relro,-z,now)
  # Relocations that only add the load address take a bit each, not 24 bytes (size -3 %). The loader
  # must know them: glibc 2.36. A cross build's own linker flags decide for its target.
  if(NOT CMAKE_CROSSCOMPILING)
    check_linker_flag(CXX LINKER:-z,pack-relative-relocs VIRTUAL_MODEM_CAN_PACK_RELOCATIONS)
    if(VIRTUAL_MODEM_CAN_PACK_RELOCATIONS)
      target_link_options(${target} PRIVATE LINKER:-z,pack-relative-relocs)
    endif()
  endif()

  if(ANDROID)
    # Footprint; what each is worth stands in docs/android.md.
    target_compile_options(${target} PRIVATE
      -fno-rtti -fno-exceptions -funwind-tables -ffunction-sections -fdata-sections -faddrsig)
    target_link_options(${target} PRIVATE
      LINKER:--icf=safe,--pack-dyn-relocs=android+relr)
    # The loader has folders of its own, and the build's has no place in the file.
    set_target_properties(${target} PROPERTIES SKIP_BUILD_RPATH TRUE)
  endif()
endfunction()
