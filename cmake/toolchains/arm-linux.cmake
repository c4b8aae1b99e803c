# 32-bit ARM Linux: Debian's cross packages and the compiler and linker of the Android build.
# What is built runs under qemu-arm.
#
# Instruction set and calling convention are those of armeabi-v7a: ARMv7-A, Thumb, floating-point
# values in integer registers ("softfp"). That is Debian's gnueabi, not gnueabihf.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR armv7-a)
set(CMAKE_C_COMPILER clang-19)
set(CMAKE_CXX_COMPILER clang++-19)
set(CMAKE_C_COMPILER_TARGET arm-linux-gnueabi)
set(CMAKE_CXX_COMPILER_TARGET arm-linux-gnueabi)
include(${CMAKE_CURRENT_LIST_DIR}/armeabi-v7a.cmake)
set(CMAKE_C_FLAGS_INIT "${VIRTUAL_MODEM_ARMEABI_V7A_FLAGS}")
set(CMAKE_CXX_FLAGS_INIT "${VIRTUAL_MODEM_ARMEABI_V7A_FLAGS}")
set(CMAKE_EXE_LINKER_FLAGS_INIT -fuse-ld=lld)
set(CMAKE_SHARED_LINKER_FLAGS_INIT -fuse-ld=lld)

set(CMAKE_CROSSCOMPILING_EMULATOR qemu-arm;-L;/usr/arm-linux-gnueabi)
set(CMAKE_FIND_ROOT_PATH /usr/arm-linux-gnueabi)
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
