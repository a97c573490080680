# Sanitizers and coverage instrument whole processes, so all targets get these flags.
if(ZN_SANITIZE)
    add_compile_options(-fsanitize=${ZN_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
    add_link_options(-fsanitize=${ZN_SANITIZE})
endif()

# Coverage needs Clang, which counts the conditions of the source; GCC counts the jumps of the compiled
# code, including those to exception cleanup. Every program merges its counts into one file, independent
# of its environment and working directory. Only C++ is counted, because all C code is the simulator's.
if(ZN_COVERAGE)
    set(profile "-fprofile-instr-generate=${PROJECT_BINARY_DIR}/profiles/%m.profraw")
    add_compile_options("$<$<COMPILE_LANGUAGE:CXX>:${profile};-fcoverage-mapping>")
    add_link_options("$<$<LINK_LANGUAGE:CXX>:${profile}>")
endif()
