/* A camera that writes a mark to standard output whenever it is called, and one when the process
 * exits normally. The marks go through the C library's buffer, as the program's response does, so
 * the output shows the order of everything that happened.
 *
 * The build defines CAMERA_FLAGS, the initial option bits, and CAMERA_HANDLE, the handle.
 * CAMERA_FAILS=1 in the environment makes the start fail. */
#include "csdk.h"

#include <stdio.h>
#include <stdlib.h>

struct csdk_state csdk = {.handle = CAMERA_HANDLE};

struct csdk_settings_record csdk_settings = {.flags = CAMERA_FLAGS};

static void mark_exit(void) { fputs("<exit>", stdout); }

int csdk_init(void) {
    printf("<init %02x>", csdk_settings.flags);
    atexit(mark_exit);
    return getenv("CAMERA_FAILS") ? 1 : 0;
}

int csdk_next_resolution(int handle, int* width, int* height) {
    static int const sizes[][2] = {{3, 4}, {640, 480}, {1, 2}};
    static unsigned int next;

    fputs("<next>", stdout);
    if (handle != csdk.handle || next == sizeof sizes / sizeof *sizes)
        return 1;
    *width = sizes[next][0];
    *height = sizes[next][1];
    ++next;
    return 0;
}

int csdk_deinit(void) {
    fputs("<deinit>", stdout);
    return 0;
}
