# How code for the device is compiled and linked: as the platform's build does it, and for the
# library what Android.bp asks for beyond that. That file is the one list of the library's own flags.

option(VIRTUAL_MODEM_DEVICE "Compile and link as for the device" ${ANDROID})

# What a platform build gives every module. The platform compiles with -Os, which the presets set.
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

# Sets variable to the strings of a list of the library's module in Android.bp.
function(_read_android_bp property variable)
  set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/Android.bp)
  file(READ ${PROJECT_SOURCE_DIR}/Android.bp modules)
  string(REGEX REPLACE ".*name: \"lib-virtual-modem-protos\"" "" module "${modules}")
  if(NOT module MATCHES "\n    ${property}: \\[\n([^]]+)\\]")
    message(FATAL_ERROR "Android.bp: no list '${property}' in module lib-virtual-modem-protos")
  endif()
  string(REGEX MATCHALL "\"[^\"]+\"" flags "${CMAKE_MATCH_1}")
  list(TRANSFORM flags REPLACE "\"(.*)\"" "\\1")
  set(${variable} "${flags}" PARENT_SCOPE)
endfunction()

if(VIRTUAL_MODEM_DEVICE)
  _read_android_bp(cflags _cflags)
  _read_android_bp(ldflags VIRTUAL_MODEM_DEVICE_LDFLAGS)
  # To measure what a flag is worth, name the others here.
  set(VIRTUAL_MODEM_DEVICE_CFLAGS "" CACHE STRING
    "The library's compiler flags for the device, instead of those of Android.bp")
  if(NOT VIRTUAL_MODEM_DEVICE_CFLAGS)
    set(VIRTUAL_MODEM_DEVICE_CFLAGS ${_cflags})
  endif()
endif()

function(virtual_modem_device_flags target)
  # The prefix keeps a flag that stands twice, and splits "-include FILE".
  list(TRANSFORM VIRTUAL_MODEM_DEVICE_CFLAGS PREPEND "SHELL:" OUTPUT_VARIABLE cflags)
  target_compile_options(${target} PRIVATE ${cflags})
  target_include_directories(${target} PRIVATE ${PROJECT_SOURCE_DIR}/src/messages)
  target_link_options(${target} PRIVATE ${VIRTUAL_MODEM_DEVICE_LDFLAGS})
endfunction()
