# Builds and installs FOLDER/SCRIPT of tools/ with the schema in it, by the target virtual-modem-FOLDER
# with its path as property VIRTUAL_MODEM_SCRIPT. A package has a link to it where its program looks by itself.
function(virtual_modem_embed_schema folder script component link)
  set(place share/virtual-modem-protos/${folder})
  set(output ${PROJECT_BINARY_DIR}/${place}/${script})
  set(source ${PROJECT_SOURCE_DIR}/tools/${folder}/${script})
  set(embed ${PROJECT_SOURCE_DIR}/tools/embed_schema.py)
  add_custom_command(
    OUTPUT ${output}
    COMMAND ${virtual_modem_python} ${embed}
      $<TARGET_PROPERTY:virtual-modem-protos,VIRTUAL_MODEM_DESCRIPTOR_SET> ${source} ${output}
    DEPENDS ${embed} ${source} ${virtual_modem_schema_inputs}
    COMMENT "Generating ${folder}/${script}"
    VERBATIM)
  add_custom_target(virtual-modem-${folder} ALL DEPENDS ${output})
  set_target_properties(virtual-modem-${folder} PROPERTIES VIRTUAL_MODEM_SCRIPT ${output})
  if(NOT VIRTUAL_MODEM_INSTALL)
    return()
  endif()
  install(FILES ${output} DESTINATION ${place} COMPONENT ${component})
  if(CMAKE_INSTALL_PREFIX STREQUAL "/usr")
    cmake_path(GET link FILENAME name)
    cmake_path(GET link PARENT_PATH link_folder)
    file(RELATIVE_PATH target /usr/${link_folder} /usr/${place}/${script})
    file(CREATE_LINK ${target} ${CMAKE_CURRENT_BINARY_DIR}/${name} SYMBOLIC)
    install(FILES ${CMAKE_CURRENT_BINARY_DIR}/${name} DESTINATION ${link_folder} COMPONENT ${component})
  endif()
endfunction()
