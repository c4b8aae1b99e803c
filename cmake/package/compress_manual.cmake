# Run by CPack on the files to be packaged: Debian wants manual pages compressed.
file(GLOB pages ${CPACK_TEMPORARY_INSTALL_DIRECTORY}/*/usr/share/man/man*/*)
if(pages)
  execute_process(COMMAND gzip --best --no-name --force ${pages} COMMAND_ERROR_IS_FATAL ANY)
endif()
