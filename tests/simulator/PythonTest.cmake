# add_python_test(NAME SCRIPT [VARIABLE=VALUE...]): a test in Python that runs the target's programs
# against the camera simulator. It needs nothing but Python's standard library.
include_guard()

find_package(Python3 REQUIRED COMPONENTS Interpreter)
set(zn_python_path "${CMAKE_CURRENT_LIST_DIR}")

function(add_python_test name script)
    string(REPLACE ";" " " emulator "${CMAKE_CROSSCOMPILING_EMULATOR}")
    add_test(NAME ${name}
        COMMAND "${Python3_EXECUTABLE}" -B "${CMAKE_CURRENT_SOURCE_DIR}/${script}")
    set_tests_properties(${name} PROPERTIES
        TIMEOUT 600
        ENVIRONMENT "PYTHONPATH=${zn_python_path};\
ZN_SIMULATOR=$<TARGET_FILE_DIR:csdk-simulator>;ZN_EMULATOR=${emulator};${ARGN}")
endfunction()
