# What makes the code small, quick to start and hard to attack. Three sets of flags; each includes the
# one before.

# All code that is installed.
add_library(zn-flags-installed INTERFACE)
target_compile_options(zn-flags-installed INTERFACE
    # The linker can drop each function alone.
    -ffunction-sections
    -fdata-sections
    "$<$<CONFIG:Release>:-O2;-fstack-protector-strong;-U_FORTIFY_SOURCE;-D_FORTIFY_SOURCE=2>")

# The program's code, and the library as it is linked into the program: a fixed address makes the
# loader copy the SDK's two records into the program.
add_library(zn-flags-fixed-address INTERFACE)
target_link_libraries(zn-flags-fixed-address INTERFACE zn-flags-installed)
target_compile_options(zn-flags-fixed-address INTERFACE -fno-pie)
target_link_options(zn-flags-fixed-address INTERFACE -no-pie)

# The program as a whole.
add_library(zn-flags-program INTERFACE)
target_link_libraries(zn-flags-program INTERFACE zn-flags-fixed-address)
target_link_options(zn-flags-program INTERFACE
    # Only what is reached, and only the libraries that are used.
    -Wl,--gc-sections
    -Wl,--as-needed
    # The dynamic symbol table holds what the SDK must see; the loader reads one hash table.
    -Wl,--exclude-libs,ALL
    -Wl,--hash-style=gnu
    # Bound at start, read-only from then on.
    -Wl,-z,relro
    -Wl,-z,now
    -Wl,-z,noexecstack)
if(NOT ZN_SANITIZE)
    # The camera needs no C++ runtime. (Sanitizers replace parts of the shared one.)
    target_link_options(zn-flags-program INTERFACE -static-libstdc++ -static-libgcc)
endif()

# zn_find_stand_in_sdk(TARGET PATH): the program finds the stand-in SDK in the build tree by its PATH
# from the program's folder, so that the tree can be moved. (CMake's own run path would end in an empty
# element, which makes the loader search the working directory.)
function(zn_find_stand_in_sdk target path)
    set_target_properties(${target} PROPERTIES
        SKIP_BUILD_RPATH ON
        LINK_FLAGS "-Wl,-rpath,'\$ORIGIN/${path}'")
endfunction()
