# Sets variable to the path of a command that starts a program of this build, for test scripts: the
# program itself, or one that starts it under the emulator of a cross build.
function(virtual_modem_runnable_program target variable)
  set(command $<TARGET_FILE:${target}>)
  if(CMAKE_CROSSCOMPILING)
    list(JOIN CMAKE_CROSSCOMPILING_EMULATOR " " emulator)
    set(wrapper ${PROJECT_BINARY_DIR}/emulated/${target})
    get_property(wrapped GLOBAL PROPERTY VIRTUAL_MODEM_WRAPPED_PROGRAMS)
    if(NOT target IN_LIST wrapped)
      file(GENERATE OUTPUT ${wrapper} CONTENT "#!/bin/sh\nexec ${emulator} ${command} \"$@\"\n"
        FILE_PERMISSIONS OWNER_READ OWNER_WRITE OWNER_EXECUTE)
      set_property(GLOBAL APPEND PROPERTY VIRTUAL_MODEM_WRAPPED_PROGRAMS ${target})
    endif()
    set(command ${wrapper})
  endif()
  set(${variable} ${command} PARENT_SCOPE)
endfunction()
