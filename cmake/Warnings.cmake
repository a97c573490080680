# Our own code compiles without warnings; foreign code is not asked.
function(zn_enable_warnings target)
    target_compile_options(${target} PRIVATE -Wall -Wextra -Wpedantic -Wconversion -Wshadow)
    set_target_properties(${target} PROPERTIES COMPILE_WARNING_AS_ERROR ${ZN_WERROR})
endfunction()
