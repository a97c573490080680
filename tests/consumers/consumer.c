/* The C functions, from C. */
#include "system/zn_portability.h"

#include <stdio.h>

int main(void) {
    printf("%d\n", zn_stricmp("Camera", "camera"));
    return 0;
}
