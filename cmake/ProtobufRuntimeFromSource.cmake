# Builds the lite runtime out of Debian's source of it, by upstream's own recipe: the target
# libprotobuf-lite and its alias protobuf::libprotobuf-lite.
#
# For targets that have no package of the runtime (ARM, Android), and on the host for builds that
# want this project's compiler flags on both sides of the boundary. The file name and SONAME are the
# ones of the Android platform. It is installed beside the library, with its headers in a folder of
# their own, so that it never mixes with a runtime package of the system.

set(VIRTUAL_MODEM_PROTOBUF_SOURCE_DIR
  ${PROJECT_SOURCE_DIR}/build/third_party/protobuf-${VIRTUAL_MODEM_PROTOBUF_RELEASE}
  CACHE PATH "Unpacked source of protocol buffers; fetched when the default does not exist")

if(NOT EXISTS ${VIRTUAL_MODEM_PROTOBUF_SOURCE_DIR})
  message(STATUS "Fetching the source of the runtime")
  execute_process(COMMAND ${PROJECT_SOURCE_DIR}/scripts/fetch-protobuf-source
    COMMAND_ERROR_IS_FATAL ANY)
endif()

set(protobuf_SOURCE_DIR ${VIRTUAL_MODEM_PROTOBUF_SOURCE_DIR})
file(READ ${protobuf_SOURCE_DIR}/version.json _release)
string(JSON _release GET "${_release}" 21.x languages cpp)
if(NOT _release VERSION_EQUAL VIRTUAL_MODEM_PROTOBUF_RELEASE)
  message(FATAL_ERROR
    "${protobuf_SOURCE_DIR} holds release '${_release}' of protocol buffers, but this library is "
    "made with release ${VIRTUAL_MODEM_PROTOBUF_RELEASE}. Set -DVIRTUAL_MODEM_PROTOBUF_SOURCE_DIR "
    "to the source of that release.")
endif()

find_package(Threads REQUIRED)
set(protobuf_SHARED_OR_STATIC SHARED)
set(protobuf_HAVE_LD_VERSION_SCRIPT TRUE)
set(protobuf_VERSION ${_release})
include(${protobuf_SOURCE_DIR}/cmake/libprotobuf-lite.cmake)

set_property(TARGET libprotobuf-lite PROPERTY VERSION)
set_property(TARGET libprotobuf-lite PROPERTY SOVERSION)
set(runtime_include_dir ${CMAKE_INSTALL_INCLUDEDIR}/virtual-modem-protos/runtime)
set_target_properties(libprotobuf-lite PROPERTIES
  OUTPUT_NAME protobuf-cpp-lite-21.12
  LIBRARY_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR}/src
  SYSTEM TRUE
  INTERFACE_INCLUDE_DIRECTORIES
    "$<BUILD_INTERFACE:${protobuf_SOURCE_DIR}/src>;$<INSTALL_INTERFACE:${runtime_include_dir}>"
  INTERFACE_LINK_LIBRARIES Threads::Threads)
virtual_modem_tune_shared_library(libprotobuf-lite)
# The units that each parse and serialize passes through (time -2 %, all of it in decoding). Android's
# build is for size.
if(CMAKE_BUILD_TYPE STREQUAL "Release" AND NOT ANDROID)
  set(_hot_units parse_context message_lite arenastring generated_message_util repeated_ptr_field
    wire_format_lite io/coded_stream)
  list(TRANSFORM _hot_units REPLACE ".+" "${protobuf_SOURCE_DIR}/src/google/protobuf/\\0.cc")
  set_property(SOURCE ${_hot_units} APPEND PROPERTY COMPILE_OPTIONS -O3)
endif()

install(TARGETS libprotobuf-lite EXPORT VirtualModemProtosTargets
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT runtime)
foreach(_header IN LISTS libprotobuf_lite_includes ITEMS
    ${protobuf_SOURCE_DIR}/src/google/protobuf/port_def.inc
    ${protobuf_SOURCE_DIR}/src/google/protobuf/port_undef.inc)
  file(RELATIVE_PATH _path ${protobuf_SOURCE_DIR}/src ${_header})
  cmake_path(GET _path PARENT_PATH _folder)
  install(FILES ${_header} DESTINATION ${runtime_include_dir}/${_folder} COMPONENT development)
endforeach()
