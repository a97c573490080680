# Sanitizers and coverage see everything that runs in the process, so they are set for all targets.
if(ZN_SANITIZE)
    add_compile_options(-fsanitize=${ZN_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
    add_link_options(-fsanitize=${ZN_SANITIZE})
endif()

# Clang's counters, because they stand in the source's own conditions: GCC counts the jumps that it
# made of them, those to what cleans up after an exception included. Each program merges its counts
# into one file, whatever its environment and directory are. C is the simulator, which is not meant.
if(ZN_COVERAGE)
    set(profile "-fprofile-instr-generate=${PROJECT_BINARY_DIR}/profiles/%m.profraw")
    add_compile_options("$<$<COMPILE_LANGUAGE:CXX>:${profile};-fcoverage-mapping>")
    add_link_options("$<$<LINK_LANGUAGE:CXX>:${profile}>")
endif()
