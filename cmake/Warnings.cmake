# Only our code must compile without warnings, not third-party code.
function(zn_enable_warnings target)
    target_compile_options(${target} PRIVATE -Wall -Wextra -Wpedantic -Wconversion -Wshadow)
    set_target_properties(${target} PROPERTIES COMPILE_WARNING_AS_ERROR ${ZN_WERROR})
endfunction()
