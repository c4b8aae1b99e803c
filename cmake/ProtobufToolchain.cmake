# The compiler and the lite runtime of Protocol Buffers 21.12 (C++ release 3.21.12).
#
# Generated code fits exactly one runtime release, so both are checked here, before anything is
# built. Sets VIRTUAL_MODEM_PROTOC and the target protobuf::libprotobuf-lite.

set(VIRTUAL_MODEM_RUNTIME system CACHE STRING
  "Lite runtime to build against: 'system' (its package) or 'source' (built along)")
set_property(CACHE VIRTUAL_MODEM_RUNTIME PROPERTY STRINGS system source)

set(VIRTUAL_MODEM_PROTOBUF_RELEASE 3.21.12)

find_program(VIRTUAL_MODEM_PROTOC protoc DOC "Protocol-buffer compiler of the build machine"
  NO_CMAKE_FIND_ROOT_PATH)
if(NOT VIRTUAL_MODEM_PROTOC)
  message(FATAL_ERROR
    "protoc was not found. Install release ${VIRTUAL_MODEM_PROTOBUF_RELEASE} "
    "(Debian 12: apt-get install protobuf-compiler) or set -DVIRTUAL_MODEM_PROTOC=/path/to/protoc.")
endif()

execute_process(COMMAND ${VIRTUAL_MODEM_PROTOC} --version
  OUTPUT_VARIABLE _version OUTPUT_STRIP_TRAILING_WHITESPACE ERROR_QUIET)
string(REGEX MATCH "[0-9]+(\\.[0-9]+)+" _version "${_version}")
if(NOT _version VERSION_EQUAL VIRTUAL_MODEM_PROTOBUF_RELEASE)
  message(FATAL_ERROR
    "${VIRTUAL_MODEM_PROTOC} is release '${_version}', but this library is made with release "
    "${VIRTUAL_MODEM_PROTOBUF_RELEASE}: code from another release does not fit its runtime. "
    "Set -DVIRTUAL_MODEM_PROTOC to a protoc of that release.")
endif()

if(VIRTUAL_MODEM_RUNTIME STREQUAL "system")
  find_package(ProtobufLite ${VIRTUAL_MODEM_PROTOBUF_RELEASE} EXACT REQUIRED)
elseif(VIRTUAL_MODEM_RUNTIME STREQUAL "source")
  include(ProtobufRuntimeFromSource)
else()
  message(FATAL_ERROR
    "VIRTUAL_MODEM_RUNTIME is '${VIRTUAL_MODEM_RUNTIME}'; it must be 'system' or 'source'.")
endif()
