# Checks that a camera SDK's library and this program fit together. It is also a script:
#
#     cmake -DSDK=libsdk.so -DPROGRAM=FILE [-DCMAKE_READELF=readelf] -P cmake/CheckCameraSdk.cmake
#
# FILE is any program for the camera's machine.

function(zn_readelf variable file)
    execute_process(COMMAND "${CMAKE_COMMAND}" -E env LC_ALL=C "${CMAKE_READELF}" ${ARGN} "${file}"
        OUTPUT_VARIABLE output ERROR_QUIET)
    set(${variable} "${output}" PARENT_SCOPE)
endfunction()

# Describes the machine of an ELF file: "ELF32, little endian, ARM, hard-float ABI".
function(zn_machine_of variable file)
    zn_readelf(header "${file}" --file-header)
    set(machine)
    foreach(field IN ITEMS "Class: +([^\n]+)" ", ([a-z]+ endian)" "Machine: +([^\n]+)"
            "([a-z]+-float ABI)")
        if(header MATCHES "${field}")
            list(APPEND machine "${CMAKE_MATCH_1}")
        endif()
    endforeach()
    list(JOIN machine ", " machine)
    set(${variable} "${machine}" PARENT_SCOPE)
endfunction()

# zn_check_symbol(NAME TYPE [SIZE]): appends to `faults` if `symbols`, the library's symbol table,
# has no such symbol.
macro(zn_check_symbol name type)
    if(NOT symbols MATCHES
            "([0-9xa-f]+) ([A-Z]+) +([A-Z]+) +([A-Z]+) +([0-9]+) ${name}(@[^\n]*)?\n")
        list(APPEND faults "${name} is missing")
    elseif(NOT CMAKE_MATCH_2 STREQUAL "${type}")
        list(APPEND faults "${name} is no ${type} but ${CMAKE_MATCH_2}")
    elseif("${type}" STREQUAL "OBJECT" AND NOT CMAKE_MATCH_1 EQUAL "${ARGN}")
        list(APPEND faults "${name} has ${CMAKE_MATCH_1} bytes, and the program's has ${ARGN}")
    elseif("${type}" STREQUAL "OBJECT" AND NOT CMAKE_MATCH_4 STREQUAL "DEFAULT")
        list(APPEND faults "${name} is ${CMAKE_MATCH_4}: the library would not use the program's")
    endif()
endmacro()

# zn_check_camera_sdk(SDK PROGRAM): stops with an error that lists all faults, if there are any.
function(zn_check_camera_sdk sdk program)
    set(faults)
    zn_machine_of(sdk_machine "${sdk}")
    zn_machine_of(program_machine "${program}")
    zn_readelf(header "${sdk}" --file-header)
    if(NOT header MATCHES "Type: +DYN")
        list(APPEND faults "it is no ELF shared library")
    else()
        # Older compilers do not mark a library with its float ABI.
        if(NOT sdk_machine MATCHES "float ABI")
            string(REGEX REPLACE ", [a-z]+-float ABI" "" program_machine "${program_machine}")
        endif()
        if(NOT sdk_machine STREQUAL program_machine)
            list(APPEND faults "it is for ${sdk_machine}, and this build for ${program_machine}")
        endif()
        zn_readelf(symbols "${sdk}" --dyn-syms --wide)
        zn_check_symbol(csdk OBJECT 20)
        zn_check_symbol(csdk_settings OBJECT 40)
        zn_check_symbol(csdk_init FUNC)
        zn_check_symbol(csdk_next_resolution FUNC)
        zn_check_symbol(csdk_deinit FUNC)
    endif()
    if(faults)
        list(JOIN faults "\n  " faults)
        message(FATAL_ERROR "The camera SDK ${sdk} does not fit the program:\n  ${faults}\n"
            "What an SDK must provide is in docs/sdk-requirements.md.")
    endif()
endfunction()

if(CMAKE_SCRIPT_MODE_FILE STREQUAL CMAKE_CURRENT_LIST_FILE)
    if(NOT CMAKE_READELF)
        set(CMAKE_READELF readelf)
    endif()
    zn_check_camera_sdk("${SDK}" "${PROGRAM}")
endif()
