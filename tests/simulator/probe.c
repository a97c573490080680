/* Makes one call to the SDK for each argument, and prints the results. The arguments:
 *
 *     name      sets an application name that needs escapes
 *     init      csdk_init()
 *     next      csdk_next_resolution() with the current handle
 *     stale     csdk_next_resolution() with the handle of the first call
 *     zero      csdk_next_resolution() with the handle 0
 *     all       next, until the result is not 0
 *     wider     changes the variable that receives the width
 *     higher    changes the variable that receives the height
 *     deinit    csdk_deinit()
 */
#include "csdk.h"

#include <stdio.h>
#include <string.h>

static int width = -1;
static int height = -1;

static int next(int handle) {
    int const result = csdk_next_resolution(handle, &width, &height);

    if (result == 0)
        printf("%dx%d\n", width, height);
    else
        printf("next %d\n", result);
    return result;
}

int main(int argc, char** argv) {
    int first_handle = 0;

    for (int i = 1; i < argc; ++i) {
        if (strcmp(argv[i], "name") == 0) {
            csdk_settings.application_name = "a\tb\\c\n\x7f\xff ~=";
        } else if (strcmp(argv[i], "init") == 0) {
            printf("init %d\n", csdk_init());
            first_handle = csdk.handle;
        } else if (strcmp(argv[i], "next") == 0) {
            next(csdk.handle);
        } else if (strcmp(argv[i], "stale") == 0) {
            next(first_handle);
        } else if (strcmp(argv[i], "zero") == 0) {
            next(0);
        } else if (strcmp(argv[i], "all") == 0) {
            while (next(csdk.handle) == 0)
                ;
        } else if (strcmp(argv[i], "wider") == 0) {
            ++width;
        } else if (strcmp(argv[i], "higher") == 0) {
            ++height;
        } else if (strcmp(argv[i], "deinit") == 0) {
            printf("deinit %d\n", csdk_deinit());
        } else {
            fprintf(stderr, "probe: %s: no such call\n", argv[i]);
            return 2;
        }
    }
    return 0;
}
