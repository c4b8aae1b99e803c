# Android API 35, armeabi-v7a, without an NDK: Debian's clang-19 compiles the code. The result is for
# scripts/check-android, which looks at its shape and size. It does not run here: there is no Android
# loader. Parts of Debian stand in for the platform's; what the library takes from them compiles to the
# same code:
# - headers: libc++-19's, configured as the platform's (std::__1), and glibc's for ARM, with the shims of
#   cmake/android/include ahead of them;
# - libraries: stubs that hold nothing but names, cmake/android/stubs/*.ifs. They list everything that the
#   two libraries take from the platform; a new name there fails the link.
# Missing are the NDK's start files (about a hundred bytes) and _FORTIFY_SOURCE, which takes the
# platform's headers.
set(CMAKE_SYSTEM_NAME Linux) # CMake's own Android support insists on an NDK
set(CMAKE_SYSTEM_PROCESSOR armv7-a)
set(ANDROID TRUE)
set(CMAKE_CXX_COMPILER clang++-19)
set(CMAKE_CXX_COMPILER_TARGET armv7a-linux-androideabi35)
set(CMAKE_TRY_COMPILE_TARGET_TYPE STATIC_LIBRARY)
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)

include(${CMAKE_CURRENT_LIST_DIR}/armeabi-v7a.cmake)
set(CMAKE_CXX_FLAGS_INIT "${VIRTUAL_MODEM_ARMEABI_V7A_FLAGS} -no-canonical-prefixes -nostdinc++")
set(CMAKE_CXX_STANDARD_INCLUDE_DIRECTORIES
  ${CMAKE_CURRENT_LIST_DIR}/../android/include
  /usr/lib/llvm-19/include/wasm32-wasi/c++/v1
  /usr/arm-linux-gnueabi/include
  /usr/include/android)

set(_stub_dir ${CMAKE_CURRENT_LIST_DIR}/../android/stubs)
set(_library_dir ${CMAKE_BINARY_DIR}/android-stubs)
file(MAKE_DIRECTORY ${_library_dir})
foreach(_name IN ITEMS libc++ libc libm libdl)
  execute_process(
    COMMAND llvm-ifs-19 --input-format=IFS --write-if-changed
      --output-elf=${_library_dir}/${_name}.so ${_stub_dir}/${_name}.ifs
    COMMAND_ERROR_IS_FATAL ANY)
endforeach()
set(CMAKE_SHARED_LINKER_FLAGS_INIT "-fuse-ld=lld -nostdlib -L${_library_dir} \
-Wl,-z,noexecstack,--fatal-warnings")
set(CMAKE_CXX_STANDARD_LIBRARIES "-lc++ -lc -lm -ldl")
