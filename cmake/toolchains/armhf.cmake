# 32-bit ARM, hard float.
set(CMAKE_SYSTEM_PROCESSOR arm)
set(ZN_TRIPLET arm-linux-gnueabihf)
set(ZN_EMULATOR_NAME qemu-arm)
include("${CMAKE_CURRENT_LIST_DIR}/debian-cross.cmake")
