# Sanitizers and coverage instrument whole processes, so all targets get these flags.
if(ZN_SANITIZE)
    add_compile_options(-fsanitize=${ZN_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
    add_link_options(-fsanitize=${ZN_SANITIZE})
endif()

# Clang counts the conditions of the source. GCC counts the jumps that it compiles them to, and adds
# those to the cleanup after an exception. Every program merges its counts into one file, whatever its
# environment and working directory. Only C++ is counted, because the C code is the simulator.
if(ZN_COVERAGE)
    set(profile "-fprofile-instr-generate=${PROJECT_BINARY_DIR}/profiles/%m.profraw")
    add_compile_options("$<$<COMPILE_LANGUAGE:CXX>:${profile};-fcoverage-mapping>")
    add_link_options("$<$<LINK_LANGUAGE:CXX>:${profile}>")
endif()
