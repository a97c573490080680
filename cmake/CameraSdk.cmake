# csdk::csdk is the camera SDK that the program is linked with: the camera maker's libsdk.so if
# CSDK_LIBRARY or CSDK_ROOT names it, otherwise the stand-in of sdk/simulator.
set(CSDK_LIBRARY "" CACHE FILEPATH "The camera maker's libsdk.so; empty for the stand-in camera")
set(CSDK_ROOT "" CACHE PATH "The camera maker's SDK or root file system, with libsdk.so in it")

add_subdirectory(sdk/simulator)
zn_enable_warnings(csdk-simulator)

if(NOT CSDK_LIBRARY AND NOT CSDK_ROOT)
    add_library(csdk::csdk ALIAS csdk-simulator)
    return()
endif()

set(zn_sdk "${CSDK_LIBRARY}")
if(NOT zn_sdk)
    find_library(zn_sdk_found NAMES libsdk.so PATHS "${CSDK_ROOT}"
        PATH_SUFFIXES lib usr/lib
            lib/${CMAKE_CXX_LIBRARY_ARCHITECTURE} usr/lib/${CMAKE_CXX_LIBRARY_ARCHITECTURE}
        NO_DEFAULT_PATH NO_CMAKE_FIND_ROOT_PATH NO_CACHE)
    if(NOT zn_sdk_found)
        message(FATAL_ERROR
            "CSDK_ROOT is \"${CSDK_ROOT}\", and there is no libsdk.so in it, nor in its folders "
            "lib and usr/lib.\nName the library itself with -DCSDK_LIBRARY=.")
    endif()
    set(zn_sdk "${zn_sdk_found}")
endif()

if(NOT EXISTS "${zn_sdk}" OR IS_DIRECTORY "${zn_sdk}")
    message(FATAL_ERROR
        "CSDK_LIBRARY is \"${zn_sdk}\", and there is no such file.\n"
        "Name the camera maker's library, as in -DCSDK_LIBRARY=/opt/sdk/lib/libsdk.so, "
        "or leave CSDK_LIBRARY empty to build against the stand-in camera.")
endif()

# An unsuitable library would link without an error, and the program would fail on the camera.
include(CheckCameraSdk)
set(zn_sample "${PROJECT_BINARY_DIR}/CMakeFiles/sample-program")
try_compile(zn_sample_compiles
    SOURCE_FROM_CONTENT sample.c "int main(void) { return 0; }\n"
    COPY_FILE "${zn_sample}")
zn_check_camera_sdk("${zn_sdk}" "${zn_sample}")
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS "${zn_sdk}")
message(STATUS "Camera SDK: ${zn_sdk}")

add_library(csdk::csdk SHARED IMPORTED)
set_target_properties(csdk::csdk PROPERTIES
    IMPORTED_LOCATION "${zn_sdk}"
    IMPORTED_NO_SONAME TRUE)
# The libraries that the SDK depends on are on the camera, not on this machine.
target_link_options(csdk::csdk INTERFACE -Wl,--allow-shlib-undefined)
