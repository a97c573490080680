# cmake --build --preset release --target docs builds the reference manual from the public headers.
# It fails when a public declaration has no documentation.
find_program(ZN_DOXYGEN doxygen)
set(zn_reference "${PROJECT_BINARY_DIR}/reference")

if(ZN_DOXYGEN)
    set(zn_make_reference
        COMMAND "${CMAKE_COMMAND}" -E make_directory "${zn_reference}"
        COMMAND "${CMAKE_COMMAND}" -E env
            "ZN_VERSION=${PROJECT_VERSION}" "ZN_OUTPUT=${zn_reference}"
            "${ZN_DOXYGEN}" docs/Doxyfile
        COMMAND "${CMAKE_COMMAND}" -E echo "${zn_reference}/html/index.html")
else()
    set(zn_make_reference
        COMMAND "${CMAKE_COMMAND}" -E echo "Install doxygen, and configure again."
        COMMAND "${CMAKE_COMMAND}" -E false)
endif()
add_custom_target(docs ${zn_make_reference}
    WORKING_DIRECTORY "${PROJECT_SOURCE_DIR}" VERBATIM)
