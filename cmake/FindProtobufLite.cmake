# Finds the lite runtime of Protocol Buffers and nothing else.
#
# CMake's own FindProtobuf wants the full runtime as well, which a lite-only sysroot lacks, and
# Debian's package brings no CMake config. Installed beside VirtualModemProtosConfig.cmake, which
# uses it for callers.
#
# Defines the imported target protobuf::libprotobuf-lite (kept as it is when the caller has one) and
# ProtobufLite_VERSION, read from the runtime's header.

if(TARGET protobuf::libprotobuf-lite)
  get_target_property(ProtobufLite_INCLUDE_DIR protobuf::libprotobuf-lite
    INTERFACE_INCLUDE_DIRECTORIES)
  # As a target of the same build has it.
  string(REGEX REPLACE "[$]<BUILD_INTERFACE:([^>]*)>" "\\1"
    ProtobufLite_INCLUDE_DIR "${ProtobufLite_INCLUDE_DIR}")
  set(ProtobufLite_LIBRARY protobuf::libprotobuf-lite)
else()
  find_package(PkgConfig QUIET)
  if(PkgConfig_FOUND)
    pkg_check_modules(_protobuf_lite QUIET protobuf-lite)
  endif()
  find_path(ProtobufLite_INCLUDE_DIR google/protobuf/message_lite.h
    HINTS ${_protobuf_lite_INCLUDE_DIRS})
  find_library(ProtobufLite_LIBRARY protobuf-lite HINTS ${_protobuf_lite_LIBRARY_DIRS})
  mark_as_advanced(ProtobufLite_INCLUDE_DIR ProtobufLite_LIBRARY)
endif()

# 3021012 in the header is 3.21.12. A runtime that does not tell fits no request for a release.
set(ProtobufLite_VERSION 0)
foreach(_dir IN LISTS ProtobufLite_INCLUDE_DIR)
  if(EXISTS "${_dir}/google/protobuf/stubs/common.h")
    file(STRINGS "${_dir}/google/protobuf/stubs/common.h" _line
      REGEX "#define GOOGLE_PROTOBUF_VERSION [0-9]+")
    string(REGEX MATCH "[0-9]+$" _number "${_line}")
    math(EXPR _major "${_number} / 1000000")
    math(EXPR _minor "${_number} / 1000 % 1000")
    math(EXPR _patch "${_number} % 1000")
    set(ProtobufLite_VERSION ${_major}.${_minor}.${_patch})
    break()
  endif()
endforeach()

include(FindPackageHandleStandardArgs)
find_package_handle_standard_args(ProtobufLite
  REQUIRED_VARS ProtobufLite_LIBRARY ProtobufLite_INCLUDE_DIR
  VERSION_VAR ProtobufLite_VERSION
  REASON_FAILURE_MESSAGE
    "the lite runtime of that release is missing (Debian 12 and 13: apt-get install libprotobuf-dev)")

if(ProtobufLite_FOUND AND NOT TARGET protobuf::libprotobuf-lite)
  find_package(Threads REQUIRED)
  add_library(protobuf::libprotobuf-lite UNKNOWN IMPORTED)
  set_target_properties(protobuf::libprotobuf-lite PROPERTIES
    IMPORTED_LOCATION "${ProtobufLite_LIBRARY}"
    INTERFACE_INCLUDE_DIRECTORIES "${ProtobufLite_INCLUDE_DIR}"
    INTERFACE_LINK_LIBRARIES Threads::Threads)
endif()
