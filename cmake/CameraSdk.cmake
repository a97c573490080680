# csdk::csdk, the camera SDK that the program is linked with: the camera maker's libsdk.so when
# CSDK_LIBRARY names it, the stand-in of sdk/simulator otherwise.
set(CSDK_LIBRARY "" CACHE FILEPATH "The camera maker's libsdk.so; empty for the stand-in camera")

add_subdirectory(sdk/simulator)
zn_enable_warnings(csdk-simulator)

if(NOT CSDK_LIBRARY)
    add_library(csdk::csdk ALIAS csdk-simulator)
    return()
endif()

if(NOT EXISTS "${CSDK_LIBRARY}" OR IS_DIRECTORY "${CSDK_LIBRARY}")
    message(FATAL_ERROR
        "CSDK_LIBRARY is \"${CSDK_LIBRARY}\", and there is no such file.\n"
        "Name the camera maker's library, as in -DCSDK_LIBRARY=/opt/sdk/lib/libsdk.so, "
        "or leave CSDK_LIBRARY empty to build against the stand-in camera.")
endif()

add_library(csdk::csdk SHARED IMPORTED)
set_target_properties(csdk::csdk PROPERTIES
    IMPORTED_LOCATION "${CSDK_LIBRARY}"
    IMPORTED_NO_SONAME TRUE)
# What the SDK itself needs is on the camera, not on this machine.
target_link_options(csdk::csdk INTERFACE -Wl,--allow-shlib-undefined)
