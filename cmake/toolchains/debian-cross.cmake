# Uses a cross compiler of the distribution (package g++-TRIPLET) and runs its programs with user-mode
# emulation. Including files set ZN_TRIPLET, ZN_EMULATOR_NAME and CMAKE_SYSTEM_PROCESSOR.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_C_COMPILER ${ZN_TRIPLET}-gcc)
set(CMAKE_CXX_COMPILER ${ZN_TRIPLET}-g++)

set(ZN_SYSROOT /usr/${ZN_TRIPLET})
# tools/xml/fetch installs Expat there.
set(ZN_EXPAT "${CMAKE_CURRENT_LIST_DIR}/../../build/expat/${ZN_TRIPLET}/usr/lib")
set(CMAKE_FIND_ROOT_PATH ${ZN_SYSROOT} "${ZN_EXPAT}/../..")
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)

find_program(ZN_EMULATOR NAMES ${ZN_EMULATOR_NAME} ${ZN_EMULATOR_NAME}-static)
if(ZN_EMULATOR)
    set(CMAKE_CROSSCOMPILING_EMULATOR ${ZN_EMULATOR} -L ${ZN_SYSROOT})
endif()
