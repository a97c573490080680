/* A C program that uses the library's C functions. */
#include "system/zn_portability.h"

#include <stdio.h>

int main(void) {
    printf("%d\n", zn_stricmp("Camera", "camera"));
    return 0;
}
