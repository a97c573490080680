# Flags for small code, a quick start and hardening. There are three sets; each includes the previous
# one.

# For all installed code.
add_library(zn-flags-installed INTERFACE)
target_compile_options(zn-flags-installed INTERFACE
    # Separate sections let the linker drop unused functions one by one.
    -ffunction-sections
    -fdata-sections
    "$<$<CONFIG:Release>:-O2;-fstack-protector-strong;-U_FORTIFY_SOURCE;-D_FORTIFY_SOURCE=2>")

# For the program's code and the library linked into it. Contract: the program has a fixed address, because
# only then the loader copies the SDK's two records into it.
add_library(zn-flags-fixed-address INTERFACE)
target_link_libraries(zn-flags-fixed-address INTERFACE zn-flags-installed)
target_compile_options(zn-flags-fixed-address INTERFACE -fno-pie)
target_link_options(zn-flags-fixed-address INTERFACE -no-pie)

# For the program as a whole.
add_library(zn-flags-program INTERFACE)
target_link_libraries(zn-flags-program INTERFACE zn-flags-fixed-address)
target_link_options(zn-flags-program INTERFACE
    # Drops unreachable sections and unused libraries.
    -Wl,--gc-sections
    -Wl,--as-needed
    # To save the loader work, the program exports only symbols that the SDK needs, and has one hash
    # table instead of two.
    -Wl,--exclude-libs,ALL
    -Wl,--hash-style=gnu
    # The loader binds everything at start and then makes the tables read-only.
    -Wl,-z,relro
    -Wl,-z,now
    -Wl,-z,noexecstack)
if(NOT ZN_SANITIZE)
    # The camera may have no C++ runtime. (Sanitizers replace parts of the shared one.)
    target_link_options(zn-flags-program INTERFACE -static-libstdc++ -static-libgcc)
endif()

# zn_find_stand_in_sdk(TARGET PATH): sets a run path to the stand-in SDK. PATH is relative to the program's
# folder, so the build tree can be moved. (CMake's own run path would end with an empty element, for which
# the loader searches the working directory.)
function(zn_find_stand_in_sdk target path)
    set_target_properties(${target} PROPERTIES
        SKIP_BUILD_RPATH ON
        LINK_FLAGS "-Wl,-rpath,'\$ORIGIN/${path}'")
endfunction()
