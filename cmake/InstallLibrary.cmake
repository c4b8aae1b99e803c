# Install rules that the libraries share. Nothing is installed without VIRTUAL_MODEM_INSTALL, which is
# off in a project that takes this one as a part of itself.
set(virtual_modem_package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/VirtualModemProtos)

# Defined for callers of what is installed: version.h compares it with its own, so that headers and
# packages of two versions are not mixed.
math(EXPR number
  "${PROJECT_VERSION_MAJOR} * 1000000 + ${PROJECT_VERSION_MINOR} * 1000 + ${PROJECT_VERSION_PATCH}")
set(virtual_modem_package_definition VIRTUAL_MODEM_PACKAGE_VERSION=${number})

# Installs a shared library as part of a component, with its public headers, and exports it in the CMake
# package.
function(virtual_modem_install_library target component)
  if(NOT VIRTUAL_MODEM_INSTALL)
    return()
  endif()
  get_target_property(headers ${target} INTERFACE_HEADER_SETS)
  if(headers)
    set(headers FILE_SET ${headers} COMPONENT development)
  else()
    set(headers "")
  endif()
  target_compile_definitions(${target} INTERFACE
    $<INSTALL_INTERFACE:${virtual_modem_package_definition}>)
  install(TARGETS ${target} EXPORT VirtualModemProtosTargets
    LIBRARY COMPONENT ${component} NAMELINK_COMPONENT development
    ${headers})
endfunction()

# Installs cmake/NAME.pc.in. It is relocatable as far as the folders are: an absolute
# CMAKE_INSTALL_LIBDIR or CMAKE_INSTALL_INCLUDEDIR stays where it is.
function(virtual_modem_install_pkgconfig name)
  if(NOT VIRTUAL_MODEM_INSTALL)
    return()
  endif()
  foreach(folder IN ITEMS LIBDIR INCLUDEDIR)
    set(pc_${folder} "\${prefix}")
    cmake_path(APPEND pc_${folder} ${CMAKE_INSTALL_${folder}})
  endforeach()
  if(IS_ABSOLUTE "${CMAKE_INSTALL_LIBDIR}")
    set(pc_prefix ${CMAKE_INSTALL_PREFIX})
  else()
    file(RELATIVE_PATH pc_prefix /${CMAKE_INSTALL_LIBDIR}/pkgconfig /)
    string(REGEX REPLACE "/$" "" pc_prefix "\${pcfiledir}/${pc_prefix}")
  endif()
  foreach(path IN ITEMS pc_prefix pc_LIBDIR pc_INCLUDEDIR)
    string(REPLACE " " "\\ " ${path} "${${path}}")
  endforeach()
  configure_file(${PROJECT_SOURCE_DIR}/cmake/${name}.pc.in ${name}.pc @ONLY)
  install(FILES ${CMAKE_CURRENT_BINARY_DIR}/${name}.pc
    DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT development)
endfunction()
