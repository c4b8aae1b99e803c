# 32-bit ARM Linux by Debian's cross packages; what is built runs under qemu-arm.
#
# Instruction set and calling convention are those of armeabi-v7a: ARMv7-A, Thumb, floating-point
# values in integer registers ("softfp"). That is Debian's gnueabi, not gnueabihf.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR armv7-a)
set(CMAKE_C_COMPILER arm-linux-gnueabi-gcc)
set(CMAKE_CXX_COMPILER arm-linux-gnueabi-g++)
set(_flags "-march=armv7-a+vfpv3-d16 -mfloat-abi=softfp -mthumb")
set(CMAKE_C_FLAGS_INIT "${_flags}")
# g++ notes on each std::vector parameter that its ABI once changed; nothing here is older than that.
set(CMAKE_CXX_FLAGS_INIT "${_flags} -Wno-psabi")

set(CMAKE_CROSSCOMPILING_EMULATOR qemu-arm;-L;/usr/arm-linux-gnueabi)
set(CMAKE_FIND_ROOT_PATH /usr/arm-linux-gnueabi)
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
