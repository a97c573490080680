# Sanitizers and coverage see everything that runs in the process, so they are set for all targets.
if(ZN_SANITIZE)
    add_compile_options(-fsanitize=${ZN_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
    add_link_options(-fsanitize=${ZN_SANITIZE})
endif()

if(ZN_COVERAGE)
    add_compile_options(--coverage)
    add_link_options(--coverage)
endif()
