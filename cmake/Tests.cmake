find_package(Python3 REQUIRED COMPONENTS Interpreter)

set(ZN_TEST_TIMEOUT 300 CACHE STRING "Seconds after which a test is stopped and has failed")

# zn_add_test(SOURCE [PART...]): adds a GoogleTest source under tests/ and the other sources and
# libraries of its executable. misc/zntl_String_test.cpp becomes the CTest test misc/zntl_String,
# labelled misc. It runs as one process, because starting a process is slow under emulation.
function(zn_add_test source)
    cmake_path(ABSOLUTE_PATH source OUTPUT_VARIABLE path)
    cmake_path(RELATIVE_PATH path BASE_DIRECTORY "${PROJECT_SOURCE_DIR}/tests")
    string(REGEX REPLACE "_test\\.cpp$" "" name "${path}")
    string(REGEX REPLACE "/.*" "" area "${name}")
    string(REPLACE "/" "." target "test.${name}")

    # Parts in C cannot use the precompiled C++ header.
    set(parts ${ARGN})
    set(c_parts ${ARGN})
    list(FILTER parts EXCLUDE REGEX "\\.c$")
    list(FILTER c_parts INCLUDE REGEX "\\.c$")
    add_executable(${target} "${source}" ${parts})
    if(c_parts)
        add_library(${target}.c OBJECT ${c_parts})
        target_link_libraries(${target}.c PRIVATE zn::zn)
        zn_enable_warnings(${target}.c)
        target_link_libraries(${target} PRIVATE ${target}.c)
    endif()
    set_target_properties(${target} PROPERTIES
        OUTPUT_NAME "${name}_test"
        RUNTIME_OUTPUT_DIRECTORY "${PROJECT_BINARY_DIR}/tests")
    target_link_libraries(${target} PRIVATE zn-test-support)
    target_precompile_headers(${target} REUSE_FROM zn-test-main)
    zn_enable_warnings(${target})

    add_test(NAME "${name}" COMMAND ${target})
    set_tests_properties("${name}" PROPERTIES LABELS "${area}" TIMEOUT ${ZN_TEST_TIMEOUT})
endfunction()

# zn_add_python_test(NAME SCRIPT [VARIABLE=VALUE...]): adds a test in Python that uses only the standard
# library and the modules in tests/support. The test app.session is labelled app. Environment variables
# describe the build; VARIABLE=VALUE adds one.
function(zn_add_python_test name script)
    string(REGEX REPLACE "\\..*" "" area "${name}")
    string(REPLACE ";" " " emulator "${CMAKE_CROSSCOMPILING_EMULATOR}")
    add_test(NAME ${name}
        COMMAND "${Python3_EXECUTABLE}" -B "${CMAKE_CURRENT_SOURCE_DIR}/${script}")
    set_tests_properties(${name} PROPERTIES LABELS ${area} TIMEOUT 900 ENVIRONMENT "\
PYTHONPATH=${PROJECT_SOURCE_DIR}/tests/support;\
ZN_SOURCES=${PROJECT_SOURCE_DIR};\
ZN_BUILD=${PROJECT_BINARY_DIR};\
ZN_SIMULATOR=${PROJECT_BINARY_DIR}/simulator;\
ZN_VERSION=${PROJECT_VERSION};\
ZN_EMULATOR=${emulator};\
ZN_TOOLCHAIN=${CMAKE_TOOLCHAIN_FILE};\
ZN_EXPAT=${ZN_EXPAT};\
ZN_CMAKE=${CMAKE_COMMAND};\
ZN_CC=${CMAKE_C_COMPILER};\
ZN_CXX=${CMAKE_CXX_COMPILER};\
ZN_NM=${CMAKE_NM};\
ZN_READELF=${CMAKE_READELF};\
ZN_STRIP=${CMAKE_STRIP};\
${ARGN}")
endfunction()
