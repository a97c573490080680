# Installs these components:
#
#   program          the program
#   runtime          the shared library
#   development      headers and libraries for building other programs
#   xml-runtime      the shared library that reads XML
#   xml-development  headers and libraries for building programs that read XML
#   tools            zn-dump
include(GNUInstallDirs)
include(CMakePackageConfigHelpers)

set(zn_package_dir "${CMAKE_INSTALL_LIBDIR}/cmake/zn")

install(TARGETS zn-static zn-shared EXPORT zn-targets
    ARCHIVE COMPONENT development
    LIBRARY COMPONENT runtime NAMELINK_COMPONENT development
    FILE_SET HEADERS DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}/zn" COMPONENT development)

install(EXPORT zn-targets NAMESPACE zn:: DESTINATION "${zn_package_dir}" COMPONENT development)
configure_package_config_file("${PROJECT_SOURCE_DIR}/packaging/zn-config.cmake.in" zn-config.cmake
    INSTALL_DESTINATION "${zn_package_dir}"
    NO_SET_AND_CHECK_MACRO)
write_basic_package_version_file(zn-config-version.cmake COMPATIBILITY SameMajorVersion)
install(FILES
        "${CMAKE_CURRENT_BINARY_DIR}/zn-config.cmake"
        "${CMAKE_CURRENT_BINARY_DIR}/zn-config-version.cmake"
    DESTINATION "${zn_package_dir}"
    COMPONENT development)

# The installed tree can be moved: the file derives the prefix from its own location.
set(zn_pkgconfig_dir "${CMAKE_INSTALL_LIBDIR}/pkgconfig")
file(RELATIVE_PATH ZN_PREFIX_FROM_PKGCONFIG "/prefix/${zn_pkgconfig_dir}" "/prefix")
string(REGEX REPLACE "/$" "" ZN_PREFIX_FROM_PKGCONFIG "${ZN_PREFIX_FROM_PKGCONFIG}")
configure_file("${PROJECT_SOURCE_DIR}/packaging/zn.pc.in" zn.pc @ONLY)
install(FILES "${CMAKE_CURRENT_BINARY_DIR}/zn.pc"
    DESTINATION "${zn_pkgconfig_dir}"
    COMPONENT development)

if(TARGET zn-xml-static)
    install(TARGETS zn-xml-static zn-xml-shared EXPORT zn-xml-targets
        ARCHIVE COMPONENT xml-development
        LIBRARY COMPONENT xml-runtime NAMELINK_COMPONENT xml-development)
    install(EXPORT zn-xml-targets NAMESPACE zn:: DESTINATION "${zn_package_dir}"
        COMPONENT xml-development)
    configure_file("${PROJECT_SOURCE_DIR}/packaging/zn-xml.pc.in" zn-xml.pc @ONLY)
    install(FILES "${CMAKE_CURRENT_BINARY_DIR}/zn-xml.pc"
        DESTINATION "${zn_pkgconfig_dir}"
        COMPONENT xml-development)
endif()

# zn_install_manual(NAME COMPONENT): compresses and installs the manual page packaging/NAME.1.
function(zn_install_manual name component)
    set(page "${PROJECT_SOURCE_DIR}/packaging/${name}.1")
    set(compressed "${CMAKE_CURRENT_BINARY_DIR}/${name}.1.gz")
    execute_process(COMMAND gzip -9nc "${page}"
        OUTPUT_FILE "${compressed}" COMMAND_ERROR_IS_FATAL ANY)
    set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS "${page}")
    install(FILES "${compressed}" DESTINATION "${CMAKE_INSTALL_MANDIR}/man1"
        COMPONENT ${component})
endfunction()

if(TARGET zn-dump)
    install(TARGETS zn-dump DESTINATION "${CMAKE_INSTALL_BINDIR}" COMPONENT tools)
    zn_install_manual(zn-dump tools)
endif()

if(TARGET resolution)
    # The distribution's web servers look for CGI programs in lib/cgi-bin.
    install(TARGETS resolution DESTINATION lib/cgi-bin COMPONENT program)
    # The installed program must not search the build tree for the stand-in SDK.
    install(CODE "file(RPATH_REMOVE FILE
        \"\$ENV{DESTDIR}\${CMAKE_INSTALL_PREFIX}/lib/cgi-bin/resolution\")" COMPONENT program)
    zn_install_manual(resolution program)

    # The servers' configurations, with the program's path in a package.
    set(PROGRAM /usr/lib/cgi-bin/resolution)
    set(HOME /var/www)
    set(FCGIWRAP_SOCKET /run/fcgiwrap.socket)
    file(GLOB zn_servers CONFIGURE_DEPENDS "${PROJECT_SOURCE_DIR}/packaging/servers/*.conf")
    foreach(server IN LISTS zn_servers)
        cmake_path(GET server FILENAME name)
        configure_file("${server}" "servers/${name}" @ONLY)
        install(FILES "${CMAKE_CURRENT_BINARY_DIR}/servers/${name}"
            DESTINATION "${CMAKE_INSTALL_DATADIR}/doc/zn-resolution/servers"
            COMPONENT program)
    endforeach()

    install(FILES "${PROJECT_SOURCE_DIR}/packaging/www/index.html"
        DESTINATION "${CMAKE_INSTALL_DATADIR}/doc/zn-resolution/examples"
        COMPONENT program)

    install(FILES
            "${PROJECT_SOURCE_DIR}/CHANGELOG.md"
            "${PROJECT_SOURCE_DIR}/docs/deployment.md"
            "${PROJECT_SOURCE_DIR}/docs/sdk-requirements.md"
        DESTINATION "${CMAKE_INSTALL_DATADIR}/doc/zn-resolution"
        COMPONENT program)
endif()

# Installs all pages except those about the program and those for developers of this tree.
file(GLOB zn_pages CONFIGURE_DEPENDS "${PROJECT_SOURCE_DIR}/docs/*.md"
    "${PROJECT_SOURCE_DIR}/docs/*.svg")
list(FILTER zn_pages EXCLUDE REGEX "/(deployment|developing|sdk-requirements)\\.md$")
install(FILES "${PROJECT_SOURCE_DIR}/CHANGELOG.md" ${zn_pages}
    DESTINATION "${CMAKE_INSTALL_DATADIR}/doc/libzn-dev"
    COMPONENT development)
