# What makes the program small, quick to start and hard to attack: all in this file.

# How all code is compiled that is installed.
add_library(zn-optimized INTERFACE)
target_compile_options(zn-optimized INTERFACE
    # Each function can be dropped alone.
    -ffunction-sections
    -fdata-sections
    "$<$<CONFIG:Release>:-O2;-fstack-protector-strong;-U_FORTIFY_SOURCE;-D_FORTIFY_SOURCE=2>")

# How the program's own code and the library in it are compiled.
add_library(zn-code INTERFACE)
target_link_libraries(zn-code INTERFACE zn-optimized)
# A fixed address makes the loader copy the SDK's two records into the program.
target_compile_options(zn-code INTERFACE -fno-pie)
target_link_options(zn-code INTERFACE -no-pie)

# How the program is linked.
add_library(zn-program INTERFACE)
target_link_libraries(zn-program INTERFACE zn-code)
target_link_options(zn-program INTERFACE
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
    target_link_options(zn-program INTERFACE -static-libstdc++ -static-libgcc)
endif()
