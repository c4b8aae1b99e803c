# As the platform compiles its own code for this ABI.
set(VIRTUAL_MODEM_ARMEABI_V7A_FLAGS "-march=armv7-a -mfloat-abi=softfp -mfpu=vfpv3-d16 -mthumb \
-fstack-protector-strong -ftrivial-auto-var-init=zero")
