/* A stand-in for the camera SDK: a scripted camera for development and tests.
 * README.md lists the environment variables that control it.
 *
 * Measurements of programs include this library, so it does nothing before
 * csdk_init() and needs nothing but the C library. */

#include "csdk.h"
#include "profile.h"
#include "record.h"

#include <errno.h>
#include <limits.h>
#include <stdlib.h>
#include <string.h>

/* The result of a call that the simulator rejects, and of csdk_init() if an
 * environment variable or the profile is invalid. */
enum { REFUSED = -1000 };

enum { FIRST_HANDLE = 1001 };

static char const builtin_camera[] = "640x480\n"
                                     "320x240\n"
                                     "176x144\n"
                                     "320x180\n"
                                     "160x120\n"
                                     "176x144\n";

static struct {
    int init_result;
    int end_result;
    int deinit_result;
    int new_handles;
    int count; ///< sizes to generate, or -1
    char const* profile;
    char const* record;
} options;

static struct {
    bool open;
    int handle;
    int generated;
    char* text; ///< the profile's content if it was read from a file, otherwise null
    struct profile_cursor camera;

    /* The last size that the program received. The next call records whether
     * the program's variables still contain it. */
    bool delivered;
    int width;
    int height;
} session;

/* ---- options --------------------------------------------------------- */

/* An empty variable counts as unset, because web servers pass empty ones. */
static char const* option_text(char const* name) {
    char const* const value = getenv(name);

    return value && *value ? value : NULL;
}

static bool read_number_option(char const* name, int minimum, int maximum, int preset,
                               int* number) {
    char const* const value = option_text(name);
    char const* at = value;

    *number = preset;
    if (!value)
        return true;
    if (profile_number(&at, value + strlen(value), number) && !*at && *number >= minimum &&
        *number <= maximum)
        return true;
    fprintf(stderr, "csdk simulator: %s=%s: expected a number from %d to %d\n", name, value,
            minimum, maximum);
    return false;
}

static bool read_options(void) {
    options.record = option_text("CSDK_SIMULATOR_RECORD");
    options.profile = option_text("CSDK_SIMULATOR_PROFILE");
    if (!read_number_option("CSDK_SIMULATOR_INIT_RESULT", INT_MIN, INT_MAX, 0,
                            &options.init_result) ||
        !read_number_option("CSDK_SIMULATOR_END_RESULT", INT_MIN, INT_MAX, 1,
                            &options.end_result) ||
        !read_number_option("CSDK_SIMULATOR_DEINIT_RESULT", INT_MIN, INT_MAX, 0,
                            &options.deinit_result) ||
        !read_number_option("CSDK_SIMULATOR_NEW_HANDLES", 0, 1, 0, &options.new_handles) ||
        !read_number_option("CSDK_SIMULATOR_COUNT", 0, INT_MAX, -1, &options.count))
        return false;
    if (options.end_result == 0) {
        fprintf(stderr, "csdk simulator: CSDK_SIMULATOR_END_RESULT=0: the list would never end\n");
        return false;
    }
    if (options.profile && options.count >= 0) {
        fprintf(stderr, "csdk simulator: CSDK_SIMULATOR_PROFILE and CSDK_SIMULATOR_COUNT: "
                        "expected only one of them\n");
        return false;
    }
    return true;
}

/* ---- camera ---------------------------------------------------------- */

/* Returns false and prints a message if a line of the profile is malformed. */
static bool check_camera(struct profile_cursor camera) {
    enum profile_item item;
    int width;
    int height;

    do
        item = profile_next(&camera, &width, &height);
    while (item == PROFILE_SIZE);
    if (item == PROFILE_MALFORMED)
        fprintf(stderr,
                "csdk simulator: %s:%zu: expected WIDTHxHEIGHT, two numbers that fit 32 bits\n",
                options.profile, camera.line);
    return item == PROFILE_END;
}

static bool open_camera(void) {
    char const* text = builtin_camera;
    size_t length = sizeof builtin_camera - 1;

    if (options.profile)
        text = session.text = profile_load(options.profile, &length);
    if (!text) {
        fprintf(stderr, "csdk simulator: %s: %s\n", options.profile, strerror(errno));
        return false;
    }
    session.camera = (struct profile_cursor){text, text + length, 0};
    return !options.profile || check_camera(session.camera);
}

static bool generate(int* width, int* height) {
    int const number = session.generated;

    if (number == options.count)
        return false;
    *width = number % 400;
    *height = number / 400 % 250;
    ++session.generated;
    return true;
}

static bool next_size(int* width, int* height) {
    return options.count >= 0 ? generate(width, height)
                              : profile_next(&session.camera, width, height) == PROFILE_SIZE;
}

/* ---- session --------------------------------------------------------- */

static void close_session(void) {
    free(session.text);
    memset(&session, 0, sizeof session);
    csdk.handle = -1;
}

static int open_session(void) {
    if (session.open) {
        fprintf(stderr, "csdk simulator: csdk_init() called twice\n");
        return REFUSED;
    }
    if (!read_options())
        return REFUSED;
    if (options.init_result != 0)
        return options.init_result;
    if (!open_camera()) {
        close_session();
        return REFUSED;
    }
    session.open = true;
    csdk.handle = session.handle = FIRST_HANDLE;
    return 0;
}

static int deliver(int handle, int* width, int* height) {
    if (!session.open || handle != session.handle)
        return REFUSED;
    if (!next_size(&session.width, &session.height))
        return options.end_result;
    session.delivered = true;
    *width = session.width;
    *height = session.height;
    return 0;
}

/* ---- record ---------------------------------------------------------- */

static FILE* begin_line(char const* call, int result) {
    return options.record ? record_begin(options.record, call, result) : NULL;
}

/* Returns false and prints a message if the line cannot be written. */
static bool end_line(FILE* line) {
    if (!options.record || (line && record_end(line)))
        return true;
    fprintf(stderr, "csdk simulator: %s: %s\n", options.record, strerror(errno));
    return false;
}

static bool record_records(char const* call, int result) {
    FILE* const line = begin_line(call, result);

    if (line) {
        record_bytes(line, "csdk", &csdk, sizeof csdk);
        record_bytes(line, "csdk_settings", &csdk_settings, sizeof csdk_settings);
        record_text(line, "application", csdk_settings.application_name);
        record_text(line, "vendor", csdk_settings.vendor_name);
    }
    return end_line(line);
}

/* ---- the SDK's interface --------------------------------------------- */

int csdk_init(void) {
    int const result = open_session();

    if (record_records("csdk_init", result))
        return result;
    close_session();
    return REFUSED;
}

int csdk_next_resolution(int handle, int* width, int* height) {
    int const expected = session.handle;
    bool const followed = session.delivered;
    bool const kept = followed && *width == session.width && *height == session.height;
    int const result = deliver(handle, width, height);
    FILE* const line = begin_line("csdk_next_resolution", result);

    if (line) {
        record_number(line, "handle", handle);
        record_number(line, "expected", expected);
        if (followed)
            record_number(line, "kept", kept);
        if (result == 0) {
            record_number(line, "width", *width);
            record_number(line, "height", *height);
        }
    }
    end_line(line);
    if (options.new_handles && session.open)
        csdk.handle = ++session.handle;
    return result;
}

int csdk_deinit(void) {
    int const result = session.open ? options.deinit_result : REFUSED;

    close_session();
    record_records("csdk_deinit", result);
    return result;
}
