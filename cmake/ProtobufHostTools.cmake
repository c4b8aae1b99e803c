# Builds protoc for the build machine out of the source of the runtime, for machines that have no
# protoc of the release: once per clone, for all presets, when they are configured. Sets
# VIRTUAL_MODEM_PROTOC. The full runtime, part of protoc, is built too, for the inspector.

set(_tools ${PROJECT_SOURCE_DIR}/build/third_party/protobuf-host-${VIRTUAL_MODEM_PROTOBUF_RELEASE})
file(MAKE_DIRECTORY ${PROJECT_SOURCE_DIR}/build/third_party)
file(LOCK ${_tools}.lock)  # two presets may be configured at once
if(NOT EXISTS ${_tools})
  message(STATUS "Building protoc ${VIRTUAL_MODEM_PROTOBUF_RELEASE}: some minutes, once")
  set(_generator "Unix Makefiles")
  set(_options "")
  if(CMAKE_GENERATOR MATCHES "^Ninja")
    set(_generator Ninja)
    set(_options -D CMAKE_MAKE_PROGRAM=${CMAKE_MAKE_PROGRAM})
  endif()
  # Flags and, when cross compiling, compilers of the environment are meant for the target.
  set(_environment --unset=CFLAGS --unset=CXXFLAGS --unset=CPPFLAGS --unset=LDFLAGS)
  if(CMAKE_CROSSCOMPILING)
    list(APPEND _environment --unset=CC --unset=CXX --unset=CMAKE_TOOLCHAIN_FILE)
  else()
    list(APPEND _options -D CMAKE_CXX_COMPILER=${CMAKE_CXX_COMPILER})
  endif()
  cmake_host_system_information(RESULT _cores QUERY NUMBER_OF_LOGICAL_CORES)
  file(REMOVE_RECURSE ${_tools}.build ${_tools}.install)
  foreach(_step IN ITEMS
      "-S;${protobuf_SOURCE_DIR};-B;${_tools}.build;-G;${_generator};-D;CMAKE_BUILD_TYPE=Release;-D;CMAKE_CXX_STANDARD=17;-D;CMAKE_INSTALL_LIBDIR=lib;-D;protobuf_BUILD_TESTS=OFF;-D;protobuf_BUILD_SHARED_LIBS=OFF;-D;protobuf_WITH_ZLIB=OFF;${_options}"
      "--build;${_tools}.build;--parallel;${_cores}"
      "--install;${_tools}.build;--strip;--prefix;${_tools}.install")
    execute_process(COMMAND ${CMAKE_COMMAND} -E env ${_environment} ${CMAKE_COMMAND} ${_step}
      OUTPUT_FILE ${_tools}.log ERROR_FILE ${_tools}.log RESULT_VARIABLE _failure)
    if(_failure)
      message(FATAL_ERROR "Building protoc failed; ${_tools}.log tells why.")
    endif()
  endforeach()
  file(REMOVE_RECURSE ${_tools}.build)
  # Upstream's names another folder and, in four parts, another release.
  file(WRITE ${_tools}.install/lib/pkgconfig/protobuf.pc
    "Name: protobuf\nDescription: Full runtime, built along with protoc\n"
    "Version: ${VIRTUAL_MODEM_PROTOBUF_RELEASE}\n"
    "Libs: -L\${pcfiledir}/.. -lprotobuf -pthread\nCflags: -I\${pcfiledir}/../../include\n")
  file(RENAME ${_tools}.install ${_tools})
endif()
file(LOCK ${_tools}.lock RELEASE)

set(VIRTUAL_MODEM_PROTOC ${_tools}/bin/protoc)
if(NOT CMAKE_CROSSCOMPILING)
  list(PREPEND CMAKE_PREFIX_PATH ${_tools})
endif()
