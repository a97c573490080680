/* The portability functions must compile and link in C, too. */

#include "zn_portability_c.h"

struct zn_functions zn_functions_in_c(void) {
    struct zn_functions const functions = {
        zn_get_threadid, zn_strdup,    zn_strcpy, zn_stricmp,   zn_strlwr,
        zn_strupr,       zn_vscprintf, zn_atoi64, zn_tickcount,
    };
    return functions;
}

int zn_length_in_c(char const* format, ...) {
    va_list args;
    int length;
    va_start(args, format);
    length = zn_vscprintf(format, args);
    va_end(args);
    return length;
}
