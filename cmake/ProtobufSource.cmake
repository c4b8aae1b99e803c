# The source of Protocol Buffers, from which the runtime is built, and protoc where there is none:
# sets protobuf_SOURCE_DIR.

set(_default
  ${PROJECT_SOURCE_DIR}/build/third_party/protobuf-${VIRTUAL_MODEM_PROTOBUF_RELEASE})
set(VIRTUAL_MODEM_PROTOBUF_SOURCE_DIR ${_default}
  CACHE PATH "Unpacked source of protocol buffers; fetched when the default does not exist")
set(protobuf_SOURCE_DIR ${VIRTUAL_MODEM_PROTOBUF_SOURCE_DIR})

if(protobuf_SOURCE_DIR STREQUAL _default AND NOT EXISTS ${_default})
  message(STATUS "Fetching the source of protocol buffers")
  execute_process(COMMAND ${PROJECT_SOURCE_DIR}/scripts/fetch-protobuf-source
    COMMAND_ERROR_IS_FATAL ANY)
endif()

# 3021012 in the header is 3.21.12.
set(_header ${protobuf_SOURCE_DIR}/src/google/protobuf/stubs/common.h)
set(_version "")
if(EXISTS ${_header} AND EXISTS ${protobuf_SOURCE_DIR}/cmake/libprotobuf-lite.cmake)
  file(STRINGS ${_header} _version REGEX "#define GOOGLE_PROTOBUF_VERSION [0-9]+")
  string(REGEX REPLACE ".* ([0-9]+)([0-9][0-9][0-9])([0-9][0-9][0-9])$" "\\1.\\2.\\3"
    _version "${_version}")
endif()
if(NOT _version VERSION_EQUAL VIRTUAL_MODEM_PROTOBUF_RELEASE)
  message(FATAL_ERROR
    "'${protobuf_SOURCE_DIR}' does not hold the source of protocol buffers "
    "${VIRTUAL_MODEM_PROTOBUF_RELEASE} (found: '${_version}'). Set "
    "-D VIRTUAL_MODEM_PROTOBUF_SOURCE_DIR to a folder that does.")
endif()
