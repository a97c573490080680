# cmake --build TREE --target packages, in a tree that was configured with -DZN_PACKAGES=ON, builds
# one Debian package for each zn_add_package() and one archive for each zn_add_archive(), in
# TREE/packages. The builds are reproducible: the same sources result in the same bytes anywhere.
set(zn_packages "${PROJECT_BINARY_DIR}/packages")
set(zn_make_package "${PROJECT_SOURCE_DIR}/packaging/make-package")
set(zn_changelog "${PROJECT_SOURCE_DIR}/packaging/changelog")
set(zn_maintainer "Zenthra Inc. <packages@zenthra.invalid>")

# The packages have the date of the newest entry, so that entry must be for this version.
file(STRINGS "${zn_changelog}" zn_newest LIMIT_COUNT 1)
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS "${zn_changelog}")
if(NOT zn_newest MATCHES "^zn \\(${PROJECT_VERSION}\\) ")
    message(FATAL_ERROR "${zn_changelog} starts with \"${zn_newest}\" and needs an entry for "
        "version ${PROJECT_VERSION}.")
endif()

# The distribution's name for the processor and ABI.
set(zn_architecture_x86_64-linux-gnu amd64)
set(zn_architecture_arm-linux-gnueabihf armhf)
set(zn_architecture_arm-linux-gnueabi armel)
set(zn_architecture_aarch64-linux-gnu arm64)
set(zn_architecture "${zn_architecture_${CMAKE_CXX_LIBRARY_ARCHITECTURE}}")
if(NOT zn_architecture)
    message(FATAL_ERROR "There is no package architecture for \"${CMAKE_CXX_LIBRARY_ARCHITECTURE}\".")
endif()

# Programs need at least the version of the C library with which they were built.
execute_process(
    COMMAND "${CMAKE_C_COMPILER}" -dM -E -include features.h -x c /dev/null
    OUTPUT_VARIABLE zn_macros ERROR_QUIET)
string(REGEX REPLACE ".*#define __GLIBC__ ([0-9]+).*" "\\1" zn_glibc "${zn_macros}")
string(REGEX REPLACE ".*#define __GLIBC_MINOR__ ([0-9]+).*" "\\1" zn_glibc_minor "${zn_macros}")
string(REGEX MATCH "^[0-9]+" zn_gcc "${CMAKE_CXX_COMPILER_VERSION}")

# Packages depend on the C library and the C++ runtime.
set(ZN_LIBC "libc6 (>= ${zn_glibc}.${zn_glibc_minor})")
set(ZN_CXX_RUNTIME "libstdc++6 (>= ${zn_gcc})" libgcc-s1)

add_custom_target(packages)

# zn_add_package(NAME COMPONENT component SECTION section DESCRIPTION text [TARGETS target...]
#     [DEPENDS package...] [SUGGESTS package...] [MULTI_ARCH value] [SHARED_LIBRARY name])
#
# Adds the Debian package NAME of an installed component. TARGETS are built first. The first line of
# the description is its summary. SHARED_LIBRARY names the library in the package (libzn, without the
# version). packaging/lintian/NAME, if it exists, lists the findings of lintian to ignore, with reasons.
function(zn_add_package name)
    cmake_parse_arguments(PARSE_ARGV 1 package ""
        "COMPONENT;SECTION;DESCRIPTION;MULTI_ARCH;SHARED_LIBRARY" "TARGETS;DEPENDS;SUGGESTS")
    set(control "Package: ${name}\nSource: zn\nVersion: ${PROJECT_VERSION}\n")
    string(APPEND control "Architecture: ${zn_architecture}\nMaintainer: ${zn_maintainer}\n")
    string(APPEND control "Section: ${package_SECTION}\nPriority: optional\n")
    foreach(field IN ITEMS Multi-Arch Depends Suggests)
        string(TOUPPER "${field}" variable)
        string(REPLACE "-" "_" variable "package_${variable}")
        if(${variable})
            list(JOIN ${variable} ", " value)
            string(APPEND control "${field}: ${value}\n")
        endif()
    endforeach()
    string(REPLACE "\n" "\n " description "${package_DESCRIPTION}")
    string(APPEND control "Description: ${description}\n")

    set(folder "${PROJECT_BINARY_DIR}/packaging/${name}")
    file(REMOVE_RECURSE "${folder}")
    file(WRITE "${folder}/control" "${control}")
    if(package_SHARED_LIBRARY)
        # shlibs defines how other packages depend on the library; triggers updates the loader's cache.
        set(major ${PROJECT_VERSION_MAJOR})
        file(WRITE "${folder}/shlibs"
            "${package_SHARED_LIBRARY} ${major} ${name} (>= ${PROJECT_VERSION})\n")
        file(WRITE "${folder}/triggers" "activate-noawait ldconfig\n")
    endif()

    zn_add_to_packages(${name} "${package_TARGETS}"
        "${zn_packages}/${name}_${PROJECT_VERSION}_${zn_architecture}.deb"
        "${package_COMPONENT}" "${folder}")
endfunction()

# zn_add_archive(NAME COMPONENTS component... [TARGETS target...]): adds the archive
# NAME-VERSION-ARCHITECTURE.tar.gz, which contains one folder that can be unpacked anywhere.
function(zn_add_archive name)
    cmake_parse_arguments(PARSE_ARGV 1 archive "" "" "COMPONENTS;TARGETS")
    zn_add_to_packages(${name}-archive "${archive_TARGETS}"
        "${zn_packages}/${name}-${PROJECT_VERSION}-${zn_architecture}.tar.gz"
        "${archive_COMPONENTS}" "zn-${PROJECT_VERSION}-${zn_architecture}")
endfunction()

function(zn_add_to_packages name targets file components contents)
    list(JOIN components "," components)
    add_custom_target(package.${name}
        COMMAND "${CMAKE_COMMAND}" -E env "CMAKE=${CMAKE_COMMAND}" "STRIP=${CMAKE_STRIP}"
            "${zn_make_package}" "${PROJECT_BINARY_DIR}" "${components}" "${contents}" "${file}"
        VERBATIM)
    add_dependencies(packages package.${name})
    if(targets)
        add_dependencies(package.${name} ${targets})
    endif()
endfunction()

if(TARGET resolution)
    zn_add_package(zn-resolution
        COMPONENT program
        TARGETS resolution
        SECTION web
        DEPENDS ${ZN_LIBC}
        SUGGESTS "lighttpd | httpd-cgi"
        DESCRIPTION "list a camera's small video resolutions over HTTP
A CGI program for the web server of a network camera. It asks the camera's
SDK, which comes with the camera as libsdk.so, for the resolutions and answers
with one line of JSON.")
    zn_add_archive(zn-resolution COMPONENTS program TARGETS resolution)
endif()

zn_add_package(libzn${PROJECT_VERSION_MAJOR}
    COMPONENT runtime
    TARGETS zn-shared
    SECTION libs
    MULTI_ARCH same
    SHARED_LIBRARY libzn
    DEPENDS ${ZN_LIBC} ${ZN_CXX_RUNTIME}
    DESCRIPTION "values, text and object streams for network cameras
A C++ library of serializable values, text operations, object streams and
video types. This package holds the shared library that programs run with.")

zn_add_package(libzn-dev
    COMPONENT development
    TARGETS zn-static zn-shared
    SECTION libdevel
    MULTI_ARCH same
    DEPENDS "libzn${PROJECT_VERSION_MAJOR} (= ${PROJECT_VERSION})"
    SUGGESTS g++ cmake pkg-config
    DESCRIPTION "values, text and object streams, for development
A C++ library of serializable values, text operations, object streams and
video types. This package holds the headers, the static library, the CMake
package, the pkg-config file and the documents.")

zn_add_archive(libzn COMPONENTS runtime development TARGETS zn-static zn-shared)

if(TARGET zn-dump)
    zn_add_package(zn-tools
        COMPONENT tools
        TARGETS zn-dump
        SECTION utils
        DEPENDS ${ZN_LIBC}
        DESCRIPTION "print the values in files stored with the library zn
The program zn-dump prints what object stream files and typed files hold, for
people or as JSON, and where they are damaged.")
    zn_add_archive(zn-tools COMPONENTS tools TARGETS zn-dump)
endif()

if(TARGET zn-xml-static)
    zn_add_package(libzn-xml${PROJECT_VERSION_MAJOR}
        COMPONENT xml-runtime
        TARGETS zn-xml-shared
        SECTION libs
        MULTI_ARCH same
        SHARED_LIBRARY libzn-xml
        DEPENDS ${ZN_LIBC} ${ZN_CXX_RUNTIME} "libexpat1 (>= 2.4)"
            "libzn${PROJECT_VERSION_MAJOR} (= ${PROJECT_VERSION})"
        DESCRIPTION "XML reader of the library zn
With this library, programs that use zn read XML documents, and the values
that they stored as XML. It holds the shared library that programs run with.")

    zn_add_package(libzn-xml-dev
        COMPONENT xml-development
        TARGETS zn-xml-static zn-xml-shared
        SECTION libdevel
        MULTI_ARCH same
        DEPENDS "libzn-xml${PROJECT_VERSION_MAJOR} (= ${PROJECT_VERSION})"
            "libzn-dev (= ${PROJECT_VERSION})" libexpat1-dev
        DESCRIPTION "XML reader of the library zn, for development
With this library, programs that use zn read XML documents, and the values
that they stored as XML. It holds the static library, the CMake package and
the pkg-config file; the headers are those of zn.")

    zn_add_archive(libzn-xml
        COMPONENTS xml-runtime xml-development TARGETS zn-xml-static zn-xml-shared)
endif()
