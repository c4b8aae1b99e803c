# Builds the lite runtime out of its source, by upstream's own recipe: the target libprotobuf-lite
# and its alias protobuf::libprotobuf-lite.
#
# For targets that have no package of the runtime (ARM, Android), and on the host for builds that
# want this project's compiler flags on both sides of the boundary. The file name and SONAME are the
# ones of the Android platform. It is installed beside the library, with its headers in a folder of
# their own, so that it never mixes with a runtime package of the system.

foreach(_target IN ITEMS protobuf::libprotobuf-lite libprotobuf-lite)
  if(TARGET ${_target})
    message(FATAL_ERROR
      "This project has a lite runtime already (target ${_target}), and one process cannot hold two. "
      "Use it with -D VIRTUAL_MODEM_RUNTIME=system.")
  endif()
endforeach()

find_package(Threads REQUIRED)
set(protobuf_SHARED_OR_STATIC SHARED)
set(protobuf_HAVE_LD_VERSION_SCRIPT TRUE)
set(protobuf_VERSION ${VIRTUAL_MODEM_PROTOBUF_RELEASE})
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
if(NOT VIRTUAL_MODEM_DEVICE)
  # The units that every parse and serialize passes through; see SharedLibrary.cmake.
  set(_hot_units parse_context message_lite arenastring generated_message_util repeated_ptr_field
    wire_format_lite io/coded_stream)
  list(TRANSFORM _hot_units REPLACE ".+" "${protobuf_SOURCE_DIR}/src/google/protobuf/\\0.cc")
  set_property(SOURCE ${_hot_units} APPEND PROPERTY COMPILE_OPTIONS $<$<CONFIG:Release>:-O3>)
endif()
if(ANDROID)
  # It takes names from the platform that no stub of the check has.
  target_link_options(libprotobuf-lite PRIVATE LINKER:-z,undefs)
endif()
virtual_modem_install_library(libprotobuf-lite runtime)
if(VIRTUAL_MODEM_INSTALL)
  foreach(_header IN LISTS libprotobuf_lite_includes ITEMS
      ${protobuf_SOURCE_DIR}/src/google/protobuf/port_def.inc
      ${protobuf_SOURCE_DIR}/src/google/protobuf/port_undef.inc)
    file(RELATIVE_PATH _path ${protobuf_SOURCE_DIR}/src ${_header})
    cmake_path(GET _path PARENT_PATH _folder)
    install(FILES ${_header} DESTINATION ${runtime_include_dir}/${_folder} COMPONENT development)
  endforeach()
endif()
