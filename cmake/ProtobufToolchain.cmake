# The compiler and the lite runtime of Protocol Buffers 21.12 (C++ release 3.21.12).
#
# Generated code fits exactly one runtime release, so both are checked here, before anything is
# built. Sets VIRTUAL_MODEM_PROTOC and the target protobuf::libprotobuf-lite.

set(VIRTUAL_MODEM_RUNTIME system CACHE STRING
  "Lite runtime to build against: 'system' (its package) or 'source' (built along)")
set_property(CACHE VIRTUAL_MODEM_RUNTIME PROPERTY STRINGS system source)
if(NOT VIRTUAL_MODEM_RUNTIME MATCHES "^(system|source)$")
  message(FATAL_ERROR
    "VIRTUAL_MODEM_RUNTIME is '${VIRTUAL_MODEM_RUNTIME}'; it must be 'system' or 'source'.")
endif()

set(VIRTUAL_MODEM_PROTOBUF_RELEASE 3.21.12)

if(VIRTUAL_MODEM_RUNTIME STREQUAL "source")
  include(ProtobufSource)
endif()

# ---- protoc ---------------------------------------------------------------------------------------
function(virtual_modem_protoc_release result protoc)
  execute_process(COMMAND ${protoc} --version
    OUTPUT_VARIABLE release OUTPUT_STRIP_TRAILING_WHITESPACE ERROR_QUIET)
  string(REGEX MATCH "[0-9]+(\\.[0-9]+)+" release "${release}")
  set(${result} "${release}" PARENT_SCOPE)
endfunction()
function(virtual_modem_protoc_fits result protoc)
  virtual_modem_protoc_release(release ${protoc})
  if(NOT release VERSION_EQUAL VIRTUAL_MODEM_PROTOBUF_RELEASE)
    set(${result} FALSE PARENT_SCOPE)
  endif()
endfunction()

find_program(VIRTUAL_MODEM_PROTOC protoc NO_CMAKE_FIND_ROOT_PATH
  VALIDATOR virtual_modem_protoc_fits DOC "Protocol-buffer compiler of the build machine")
if(NOT VIRTUAL_MODEM_PROTOC AND VIRTUAL_MODEM_RUNTIME STREQUAL "source")
  include(ProtobufHostTools)
endif()
virtual_modem_protoc_release(_release ${VIRTUAL_MODEM_PROTOC})
if(NOT _release VERSION_EQUAL VIRTUAL_MODEM_PROTOBUF_RELEASE)
  message(FATAL_ERROR
    "No protoc of release ${VIRTUAL_MODEM_PROTOBUF_RELEASE} was found, and code from another does not fit "
    "the runtime (VIRTUAL_MODEM_PROTOC is '${VIRTUAL_MODEM_PROTOC}', release '${_release}'). Install it "
    "(Debian 12 and 13: scripts/setup build, which is apt-get install protobuf-compiler), name one with "
    "-D VIRTUAL_MODEM_PROTOC=/path/to/protoc, or have protoc and runtime built from their source with "
    "-D VIRTUAL_MODEM_RUNTIME=source (README.md, \"Another protobuf, or none\").")
endif()

# ---- Runtime --------------------------------------------------------------------------------------
if(VIRTUAL_MODEM_RUNTIME STREQUAL "system")
  find_package(ProtobufLite ${VIRTUAL_MODEM_PROTOBUF_RELEASE} EXACT REQUIRED)
else()
  include(ProtobufRuntimeFromSource)
endif()
