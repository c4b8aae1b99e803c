# As the platform compiles its own code for this ABI. Devices of today have NEON; the ABI allows a device
# without, to which -D VIRTUAL_MODEM_ARM_FPU=vfpv3-d16 turns.
set(VIRTUAL_MODEM_ARM_FPU neon CACHE STRING "Floating-point unit: neon or vfpv3-d16")
set(VIRTUAL_MODEM_ARMEABI_V7A_FLAGS "-march=armv7-a -mfloat-abi=softfp -mfpu=${VIRTUAL_MODEM_ARM_FPU} \
-mthumb -fstack-protector-strong -ftrivial-auto-var-init=zero")
