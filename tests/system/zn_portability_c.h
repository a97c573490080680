#pragma once

#include "system/zn_portability.h"

#ifdef __cplusplus
extern "C" {
#endif

/* The functions as C sees them. */
struct zn_functions {
    unsigned long (*get_threadid)(void);
    char* (*strdup)(char const*);
    char* (*strcpy)(char*, unsigned int, char const*);
    int (*stricmp)(char const*, char const*);
    char* (*strlwr)(char*);
    char* (*strupr)(char*);
    int (*vscprintf)(char const*, va_list);
    int64_t (*atoi64)(char const*);
    uint32_t (*tickcount)(void);
};

struct zn_functions zn_functions_in_c(void);

/* zn_vscprintf, called from C. */
int zn_length_in_c(char const* format, ...);

#ifdef __cplusplus
}
#endif
