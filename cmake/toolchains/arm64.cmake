# 64-bit ARM.
set(CMAKE_SYSTEM_PROCESSOR aarch64)
set(ZN_TRIPLET aarch64-linux-gnu)
set(ZN_EMULATOR_NAME qemu-aarch64)
include("${CMAKE_CURRENT_LIST_DIR}/debian-cross.cmake")
