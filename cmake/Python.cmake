# Python 3 with google.protobuf, which the generators and some tests use: VIRTUAL_MODEM_PYTHON.
#
# Any release of google.protobuf will do. If there is none, one is built from the source that the
# runtime is built from (VIRTUAL_MODEM_RUNTIME=source).

function(virtual_modem_reads_protobuf result python)
  execute_process(COMMAND ${python} -c "import google.protobuf.descriptor_pb2"
    RESULT_VARIABLE failure OUTPUT_QUIET ERROR_QUIET)
  if(failure)
    set(${result} FALSE PARENT_SCOPE)
  endif()
endfunction()

# /usr/bin/python3 is the one that distributions install google.protobuf for.
find_program(VIRTUAL_MODEM_PYTHON python3 PATHS /usr/bin NO_CMAKE_FIND_ROOT_PATH
  VALIDATOR virtual_modem_reads_protobuf DOC "Python 3 that can import google.protobuf")
if(NOT VIRTUAL_MODEM_PYTHON AND VIRTUAL_MODEM_RUNTIME STREQUAL "source")
  find_program(VIRTUAL_MODEM_BARE_PYTHON python3 NO_CMAKE_FIND_ROOT_PATH REQUIRED
    DOC "Python 3, given google.protobuf out of the source")
  mark_as_advanced(VIRTUAL_MODEM_BARE_PYTHON)
  set(_modules ${PROJECT_BINARY_DIR}/python)
  file(COPY ${protobuf_SOURCE_DIR}/python/google DESTINATION ${_modules})
  execute_process(
    COMMAND ${VIRTUAL_MODEM_PROTOC} --proto_path=${protobuf_SOURCE_DIR}/src --python_out=${_modules}
      google/protobuf/descriptor.proto
    COMMAND_ERROR_IS_FATAL ANY)
  file(CONFIGURE OUTPUT ${_modules}/python3 CONTENT [[#!/bin/sh
PYTHONPATH='@_modules@'${PYTHONPATH:+:$PYTHONPATH} PYTHONDONTWRITEBYTECODE=1 exec '@VIRTUAL_MODEM_BARE_PYTHON@' "$@"
]] @ONLY)
  file(CHMOD ${_modules}/python3 PERMISSIONS OWNER_READ OWNER_WRITE OWNER_EXECUTE)
  set(VIRTUAL_MODEM_PYTHON ${_modules}/python3)
endif()

set(_reads_protobuf TRUE)
virtual_modem_reads_protobuf(_reads_protobuf "${VIRTUAL_MODEM_PYTHON}")
if(NOT _reads_protobuf)
  message(FATAL_ERROR
    "No Python 3 that can import google.protobuf (VIRTUAL_MODEM_PYTHON is '${VIRTUAL_MODEM_PYTHON}'). "
    "Install one (Debian: scripts/setup build, which is apt-get install python3-protobuf) or name it "
    "with -D VIRTUAL_MODEM_PYTHON=/path/to/python3.")
endif()

# How a program that reads the schema is run (src/schema is the Python module), the descriptor set that it
# reads, and what it depends on: this and the list beside it, once they are checked.
set(virtual_modem_python ${CMAKE_COMMAND} -E env PYTHONPATH=${PROJECT_SOURCE_DIR}/src
  PYTHONDONTWRITEBYTECODE=1 ${VIRTUAL_MODEM_PYTHON})
file(GLOB virtual_modem_schema_module CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/src/schema/*.py)
set(virtual_modem_descriptor_set
  ${PROJECT_BINARY_DIR}/share/virtual-modem-protos/virtual-modem-protos.binpb)
set(virtual_modem_schema_inputs ${virtual_modem_descriptor_set}
  ${PROJECT_BINARY_DIR}/share/virtual-modem-protos/subscriber_data.txt
  ${virtual_modem_schema_module} virtual-modem-descriptor-set)

# Has a program of this project write a file from the descriptor set and further files.
# virtual_modem_generate(OUTPUT PROGRAM [FILE...])
function(virtual_modem_generate output program)
  cmake_path(GET output PARENT_PATH folder)
  cmake_path(GET output FILENAME name)
  add_custom_command(
    OUTPUT ${output}
    COMMAND ${CMAKE_COMMAND} -E make_directory ${folder}
    COMMAND ${virtual_modem_python} ${PROJECT_SOURCE_DIR}/${program} ${virtual_modem_descriptor_set}
      ${ARGN} ${output}
    DEPENDS ${PROJECT_SOURCE_DIR}/${program} ${ARGN} ${virtual_modem_schema_inputs}
    COMMENT "Generating ${name}"
    VERBATIM)
endfunction()
