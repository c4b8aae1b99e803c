# Debian packages: `cpack --preset package`, or scripts/package, which also checks them.
#
#   libvirtual-modem-protos       component runtime: the shared library and the descriptor set
#   libvirtual-modem-text1        component text: the companion library
#   libvirtual-modem-protos-dev   component development: headers, schema, CMake and pkg-config files
#   libvirtual-modem-protos-tools component tools: virtual-modem-inspect, the Wireshark dissector
#   python3-virtual-modem-protos  component python: the Python package
#
# Included with VIRTUAL_MODEM_PACKAGES. Configure with CMAKE_INSTALL_PREFIX=/usr, as the preset does:
# only then do files go to Debian's multiarch folders. The packages need Debian's own lite runtime.

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_VENDOR "Virtual Modem")
set(CPACK_PACKAGE_CONTACT "Virtual Modem maintainers <maintainers@virtual-modem.example>")
# The first line of each component's description is the summary; CPack would prepend this one.
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "")
set(CPACK_PACKAGE_DIRECTORY ${PROJECT_BINARY_DIR}/packages)
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_PRE_BUILD_SCRIPTS ${CMAKE_CURRENT_LIST_DIR}/package/compress_manual.cmake)
set(CPACK_COMPONENTS_ALL runtime text development)
if(TARGET virtual-modem-inspect)
  list(APPEND CPACK_COMPONENTS_ALL tools)
endif()
if(TARGET virtual-modem-python)
  list(APPEND CPACK_COMPONENTS_ALL python)
endif()

set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
# For the companion library; the message library's SONAME has no version that it could name.
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)

set(CPACK_DEBIAN_RUNTIME_PACKAGE_NAME libvirtual-modem-protos)
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SECTION libs)
if(VIRTUAL_MODEM_LOADER_UNPACKS_RELOCATIONS AND VIRTUAL_MODEM_CAN_PACK_RELOCATIONS)
  # dpkg-shlibdeps looks at symbols, not at the relocations that the loader must know.
  set(CPACK_DEBIAN_RUNTIME_PACKAGE_DEPENDS "libc6 (>= 2.36)")
endif()
set(CPACK_DEBIAN_RUNTIME_PACKAGE_CONTROL_EXTRA ${CMAKE_CURRENT_LIST_DIR}/package/triggers)
set(CPACK_COMPONENT_RUNTIME_DESCRIPTION "Typed telephony messages of a virtual modem
Requests, responses and indications with which the processes of a virtual
modem exchange telephony operations: message classes for the lite runtime of
Protocol Buffers, and the schema as one descriptor set for programs that read
it when they run.")

set(CPACK_DEBIAN_TEXT_PACKAGE_NAME libvirtual-modem-text${PROJECT_VERSION_MAJOR})
set(CPACK_DEBIAN_TEXT_PACKAGE_SECTION libs)
# Its tables are those of this very release.
set(CPACK_DEBIAN_TEXT_PACKAGE_DEPENDS "libvirtual-modem-protos (= ${PROJECT_VERSION})")
if(CPACK_DEBIAN_RUNTIME_PACKAGE_DEPENDS)
  string(APPEND CPACK_DEBIAN_TEXT_PACKAGE_DEPENDS ", ${CPACK_DEBIAN_RUNTIME_PACKAGE_DEPENDS}")
endif()
set(CPACK_DEBIAN_TEXT_PACKAGE_CONTROL_EXTRA ${CMAKE_CURRENT_LIST_DIR}/package/triggers)
set(CPACK_COMPONENT_TEXT_DESCRIPTION "Text and captures of the telephony messages of a virtual modem
Prints the messages of libvirtual-modem-protos with subscriber data masked or
shown, names what they lack, finds their types by name, and records them as
captures that Wireshark reads.")

set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME libvirtual-modem-protos-dev)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS "libvirtual-modem-protos (= ${PROJECT_VERSION}), \
libvirtual-modem-text${PROJECT_VERSION_MAJOR} (= ${PROJECT_VERSION}), \
libprotobuf-dev (>= ${VIRTUAL_MODEM_PROTOBUF_RELEASE}), libprotobuf-dev (<< 3.22)")
set(CPACK_COMPONENT_DEVELOPMENT_DESCRIPTION "Typed telephony messages of a virtual modem, for developers
Headers, CMake package and pkg-config file to build with the message classes,
and the schema itself, to generate the messages in other languages.")

set(CPACK_DEBIAN_TOOLS_PACKAGE_NAME libvirtual-modem-protos-tools)
set(CPACK_DEBIAN_TOOLS_PACKAGE_SECTION utils)
# For the descriptor set; the inspector does not link the library.
set(CPACK_DEBIAN_TOOLS_PACKAGE_DEPENDS "libvirtual-modem-protos (= ${PROJECT_VERSION})")
set(CPACK_COMPONENT_TOOLS_DESCRIPTION "Inspector of the telephony messages of a virtual modem
virtual-modem-inspect decodes, encodes, identifies and explains messages: from
bytes to text or JSON and back, with what is missing or unknown in them.")

set(CPACK_DEBIAN_PYTHON_PACKAGE_NAME python3-virtual-modem-protos)
set(CPACK_DEBIAN_PYTHON_PACKAGE_SECTION python)
set(CPACK_DEBIAN_PYTHON_PACKAGE_ARCHITECTURE all)
set(CPACK_DEBIAN_PYTHON_PACKAGE_SHLIBDEPS OFF)
set(CPACK_DEBIAN_PYTHON_PACKAGE_DEPENDS
  "python3:any, python3-protobuf (>= ${VIRTUAL_MODEM_PROTOBUF_RELEASE})")
set(CPACK_DEBIAN_PYTHON_PACKAGE_CONTROL_EXTRA
  ${CMAKE_CURRENT_LIST_DIR}/package/python/postinst ${CMAKE_CURRENT_LIST_DIR}/package/python/prerm)
set(CPACK_COMPONENT_PYTHON_DESCRIPTION "Typed telephony messages of a virtual modem, for Python
The messages of libvirtual-modem-protos as classes of the module virtual_modem,
and their text with subscriber data masked.")

# ---- Files that every Debian package carries ------------------------------------------------------
# The time is that of SOURCE_DATE_EPOCH when set, so that the same source gives the same package.
string(TIMESTAMP VIRTUAL_MODEM_PACKAGE_DATE "%a, %d %b %Y %H:%M:%S +0000" UTC)
set(package_files ${PROJECT_BINARY_DIR}/package-files)
configure_file(${CMAKE_CURRENT_LIST_DIR}/package/changelog.in ${package_files}/changelog @ONLY)
find_program(VIRTUAL_MODEM_GZIP gzip REQUIRED)
execute_process(COMMAND ${VIRTUAL_MODEM_GZIP} --best --no-name --force ${package_files}/changelog
  COMMAND_ERROR_IS_FATAL ANY)
foreach(component IN LISTS CPACK_COMPONENTS_ALL)
  string(TOUPPER ${component} upper)
  set(doc_dir share/doc/${CPACK_DEBIAN_${upper}_PACKAGE_NAME})
  install(FILES ${CMAKE_CURRENT_LIST_DIR}/package/copyright ${package_files}/changelog.gz
    DESTINATION ${doc_dir} COMPONENT ${component})
endforeach()

foreach(component IN ITEMS RUNTIME TEXT)
  set(package ${CPACK_DEBIAN_${component}_PACKAGE_NAME})
  string(TOLOWER ${component} lower)
  install(FILES ${CMAKE_CURRENT_LIST_DIR}/package/${lower}.lintian-overrides
    DESTINATION share/lintian/overrides RENAME ${package} COMPONENT ${lower})
endforeach()

include(CPack)
