# What scripts/package builds Debian packages from: the folder debian of the build tree.
#
#   libvirtual-modem-protos       component runtime: the shared library and the descriptor set
#   libvirtual-modem-text1        component text: the companion library
#   libvirtual-modem-protos-dev   component development: headers, schema, CMake and pkg-config files
#   libvirtual-modem-protos-tools component tools: virtual-modem-inspect, the Wireshark dissector
#   python3-virtual-modem-protos  component python: the Python package
#
# Included with VIRTUAL_MODEM_PACKAGES. Configure with CMAKE_INSTALL_PREFIX=/usr, as the preset does:
# only then do files go to Debian's multiarch folders. The packages need Debian's own lite runtime.

if(NOT TARGET virtual-modem-inspect)
  message(FATAL_ERROR "VIRTUAL_MODEM_PACKAGES: the inspector is a package, but VIRTUAL_MODEM_TOOLS is off.")
endif()

set(templates ${CMAKE_CURRENT_LIST_DIR}/package)
set(debian ${PROJECT_BINARY_DIR}/debian)
set(package_text libvirtual-modem-text${PROJECT_VERSION_MAJOR})
# The time is that of SOURCE_DATE_EPOCH when set, so that the same source gives the same package.
string(TIMESTAMP package_date "%a, %d %b %Y %H:%M:%S +0000" UTC)
if(VIRTUAL_MODEM_LOADER_UNPACKS_RELOCATIONS AND VIRTUAL_MODEM_CAN_PACK_RELOCATIONS)
  # dpkg-shlibdeps looks at symbols, not at the relocations that the loader must know.
  set(package_libc "libc6 (>= 2.36), ")
endif()

# What a program depends on that links one of the libraries: a patch release may be swapped for another
# in place; a minor one changes the size of messages, which programs allocate themselves. The message
# library's SONAME has no version, so only a symbols file can say it.
set(package_oldest ${PROJECT_VERSION_MAJOR}.${PROJECT_VERSION_MINOR}.0)
math(EXPR package_next "${PROJECT_VERSION_MINOR} + 1")
string(PREPEND package_next ${PROJECT_VERSION_MAJOR}.)
foreach(package_name IN ITEMS libvirtual-modem-protos ${package_text})
  if(package_name STREQUAL package_text)
    set(package_soname libvirtual-modem-text.so.${PROJECT_VERSION_MAJOR})
  else()
    set(package_soname lib-virtual-modem-protos.so)
  endif()
  configure_file(${templates}/symbols.in ${debian}/${package_name}.symbols @ONLY)
endforeach()

configure_file(${templates}/control.in ${debian}/control @ONLY)
configure_file(${templates}/changelog.in ${debian}/changelog @ONLY)
configure_file(${templates}/rules.in ${debian}/rules @ONLY
  FILE_PERMISSIONS OWNER_READ OWNER_WRITE OWNER_EXECUTE)
configure_file(${templates}/copyright ${debian}/copyright COPYONLY)
configure_file(${templates}/libvirtual-modem-protos.lintian-overrides
  ${debian}/libvirtual-modem-protos.lintian-overrides COPYONLY)
