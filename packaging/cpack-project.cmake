# What differs between the kinds of packages, read when they are made: the archives hold the library
# whole, and everything lies in one folder that can be unpacked anywhere.
if(CPACK_GENERATOR STREQUAL "TGZ")
    set(CPACK_ARCHIVE_COMPONENT_INSTALL ON)
    set(CPACK_COMPONENT_INCLUDE_TOPLEVEL_DIRECTORY ON)
    set(zn_suffix "${CPACK_PACKAGE_VERSION}-${CPACK_SYSTEM_NAME}")
    set(CPACK_ARCHIVE_PROGRAM-ARCHIVE_FILE_NAME "zn-resolution-${zn_suffix}")
    set(CPACK_ARCHIVE_LIBRARY-ARCHIVE_FILE_NAME "libzn-${zn_suffix}")
else()
    set(CPACK_COMPONENTS_GROUPING IGNORE)
    # The packages describe themselves.
    set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "")
endif()
