# cpack: Debian packages of the program (zn-resolution), the shared library (libzn1) and what is
# needed to build with it (libzn-dev), and one archive each of the program and of the library.
set(CPACK_GENERATOR TGZ DEB)
set(CPACK_PACKAGE_VENDOR "Zenthra, Inc.")
set(CPACK_PACKAGE_CONTACT "Zenthra, Inc. <packages@zenthra.invalid>")
set(CPACK_PACKAGE_CHECKSUM SHA256)
set(CPACK_STRIP_FILES TRUE)
# Whatever the umask of the one who packs.
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
    OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)

set(CPACK_COMPONENTS_ALL runtime development)
if(TARGET resolution)
    list(APPEND CPACK_COMPONENTS_ALL program)
endif()
set(CPACK_PROJECT_CONFIG_FILE "${PROJECT_SOURCE_DIR}/packaging/cpack-project.cmake")

# The distribution's name for the processor and ABI.
set(zn_architecture_x86_64-linux-gnu amd64)
set(zn_architecture_arm-linux-gnueabihf armhf)
set(zn_architecture_arm-linux-gnueabi armel)
set(zn_architecture_aarch64-linux-gnu arm64)
set(CPACK_SYSTEM_NAME "${zn_architecture_${CMAKE_CXX_LIBRARY_ARCHITECTURE}}")
if(NOT CPACK_SYSTEM_NAME)
    set(CPACK_SYSTEM_NAME "${CMAKE_SYSTEM_PROCESSOR}")
endif()
set(CPACK_DEBIAN_PACKAGE_ARCHITECTURE "${CPACK_SYSTEM_NAME}")

# What is built with a C library runs with this one and newer ones.
execute_process(
    COMMAND "${CMAKE_C_COMPILER}" -dM -E -include features.h -x c /dev/null
    OUTPUT_VARIABLE zn_macros ERROR_QUIET)
string(REGEX REPLACE ".*#define __GLIBC__ ([0-9]+).*" "\\1" zn_glibc "${zn_macros}")
string(REGEX REPLACE ".*#define __GLIBC_MINOR__ ([0-9]+).*" "\\1" zn_glibc_minor "${zn_macros}")
set(zn_libc "libc6 (>= ${zn_glibc}.${zn_glibc_minor})")
string(REGEX MATCH "^[0-9]+" zn_gcc "${CMAKE_CXX_COMPILER_VERSION}")

set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION TRUE)

set(CPACK_DEBIAN_PROGRAM_PACKAGE_NAME zn-resolution)
set(CPACK_DEBIAN_PROGRAM_PACKAGE_SECTION web)
set(CPACK_DEBIAN_PROGRAM_PACKAGE_DEPENDS "${zn_libc}")
set(CPACK_DEBIAN_PROGRAM_PACKAGE_SUGGESTS "lighttpd | httpd-cgi")
set(CPACK_DEBIAN_PROGRAM_DESCRIPTION "list a camera's small video resolutions over HTTP
A CGI program for the web server of a network camera. It asks the camera's
SDK, which comes with the camera as libsdk.so, for the resolutions and answers
with one line of JSON.")

set(CPACK_DEBIAN_RUNTIME_PACKAGE_NAME libzn${PROJECT_VERSION_MAJOR})
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_RUNTIME_PACKAGE_DEPENDS "${zn_libc}, libstdc++6 (>= ${zn_gcc}), libgcc-s1")
# How other packages depend on the library, and that the loader is to look for it.
set(zn_control_dir "${CMAKE_CURRENT_BINARY_DIR}/packaging")
file(WRITE "${zn_control_dir}/shlibs" "libzn ${PROJECT_VERSION_MAJOR} \
libzn${PROJECT_VERSION_MAJOR} (>= ${PROJECT_VERSION})\n")
file(WRITE "${zn_control_dir}/triggers" "activate-noawait ldconfig\n")
set(CPACK_DEBIAN_RUNTIME_PACKAGE_CONTROL_EXTRA
    "${zn_control_dir}/shlibs" "${zn_control_dir}/triggers")
set(CPACK_DEBIAN_RUNTIME_DESCRIPTION "values, text and object streams for network cameras
A C++ library of serializable values, text operations, object streams and
video types. This package holds the shared library that programs run with.")

set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME libzn-dev)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS
    "libzn${PROJECT_VERSION_MAJOR} (= ${PROJECT_VERSION})")
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SUGGESTS "g++, cmake, pkg-config")
set(CPACK_DEBIAN_DEVELOPMENT_DESCRIPTION "values, text and object streams, for development
A C++ library of serializable values, text operations, object streams and
video types. This package holds the headers, the static library, the CMake
package, the pkg-config file and the documents.")

include(CPack)
cpack_add_component(program GROUP program-archive)
cpack_add_component(runtime GROUP library-archive)
cpack_add_component(development GROUP library-archive DEPENDS runtime)
