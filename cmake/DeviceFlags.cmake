# How code for the device is compiled and linked: as the platform's build does it, and for the
# library what Android.bp asks for beyond that. That file is the one list of the library's own flags.

option(VIRTUAL_MODEM_DEVICE "Compile and link as for the device" ${ANDROID})

# What a platform build gives every module. The platform compiles with -O2, which the presets set.
function(virtual_modem_platform_flags target)
  target_compile_options(${target} PRIVATE -fomit-frame-pointer -fno-rtti -fno-exceptions
    -funwind-tables -ffunction-sections -fdata-sections -faddrsig)
  target_link_options(${target} PRIVATE LINKER:--icf=safe)
  if(ANDROID)
    # Only Android's loader knows them.
    target_link_options(${target} PRIVATE LINKER:--pack-dyn-relocs=android+relr)
    # The loader has folders of its own, and the build's has no place in the file.
    set_target_properties(${target} PROPERTIES SKIP_BUILD_RPATH TRUE)
  endif()
endfunction()

# Sets variable to the strings of a list of a module in Android.bp.
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/Android.bp)
function(virtual_modem_read_android_bp module property variable)
  file(READ ${PROJECT_SOURCE_DIR}/Android.bp modules)
  string(REGEX REPLACE ".*name: \"${module}\"" "" rest "${modules}")
  string(REGEX REPLACE "\n}.*" "" rest "${rest}")
  if(NOT rest MATCHES "\n    ${property}: \\[\n([^]]+)\\]")
    message(FATAL_ERROR "Android.bp: no list '${property}' in module ${module}")
  endif()
  string(REGEX MATCHALL "\"[^\"]+\"" flags "${CMAKE_MATCH_1}")
  list(TRANSFORM flags REPLACE "\"(.*)\"" "\\1")
  set(${variable} "${flags}" PARENT_SCOPE)
endfunction()

# To measure what a flag is worth, name the others here.
set(VIRTUAL_MODEM_DEVICE_CFLAGS "" CACHE STRING
  "Compiler flags of the libraries for the device, instead of those of Android.bp")
if(VIRTUAL_MODEM_DEVICE)
  virtual_modem_read_android_bp(virtual-modem-defaults cflags device_cflags)
  virtual_modem_read_android_bp(virtual-modem-defaults ldflags device_ldflags)
  virtual_modem_read_android_bp(lib-virtual-modem-protos cflags device_message_cflags)
endif()

# Further arguments are flags of this target alone. The prefix keeps what stands twice, and splits "-include FILE".
function(virtual_modem_device_flags target)
  if(VIRTUAL_MODEM_DEVICE)
    set(cflags ${device_cflags} ${ARGN})
    if(VIRTUAL_MODEM_DEVICE_CFLAGS)
      set(cflags ${VIRTUAL_MODEM_DEVICE_CFLAGS})
    endif()
    list(TRANSFORM cflags PREPEND "SHELL:")
    target_compile_options(${target} PRIVATE ${cflags})
    target_link_options(${target} PRIVATE ${device_ldflags})
  endif()
endfunction()
