/// @file
/// The part of the camera SDK's interface that the program uses: two records
/// and three functions, which libsdk.so exports. Compiles as C (C99 and later)
/// and as C++ (C++98 and later).
///
/// Contract: the sizes of the records must be those in the libsdk.so of every
/// camera. The program is linked as a fixed-address executable (-no-pie), so the
/// loader copies both records into the program and binds libsdk.so to the copies.
///
/// A session has four steps: fill in the settings, call csdk_init(), call
/// csdk_next_resolution() until it returns non-zero, call csdk_deinit(). Use one
/// thread and one session at a time.
#ifndef CSDK_H
#define CSDK_H

#include <stddef.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/// State of the SDK, written by the SDK only. 20 bytes on every machine.
struct csdk_state {
    /// Handle of the session, valid after a successful csdk_init(). Every call
    /// may change it, so read it again before each use.
    int32_t handle;

    unsigned char reserved[16]; ///< belongs to the SDK
};

/// The bit of csdk_settings_record::flags that turns the second option on.
enum { CSDK_FLAGS_OPTION = 0x80 };

/// Settings that csdk_init() reads. 40 bytes on every machine.
///
/// libsdk.so defines the initial contents. Change only the named fields. The
/// reserved bytes and the other bits of `flags` belong to the SDK.
struct csdk_settings_record {
    /// Name of the application, NUL-terminated. Must stay valid for the session.
    char const* application_name;

    /// Name of the application's vendor, NUL-terminated. Must stay valid for
    /// the session.
    char const* vendor_name;

    /// A setting of the SDK; the program sets it to 1.
    uint32_t mode;

    /// An option: 1 turns it on.
    uint8_t option;

    /// Option bits. The program may change CSDK_FLAGS_OPTION; the other seven
    /// belong to the SDK.
    uint8_t flags;

    /// Belongs to the SDK.
    unsigned char reserved[40 - 2 * sizeof(char const*) - 6];
};

/// The SDK's state.
extern struct csdk_state csdk;

/// The settings of the next csdk_init().
extern struct csdk_settings_record csdk_settings;

/// Starts the SDK with `csdk_settings` and makes `csdk.handle` valid.
///
/// @return 0 on success. Any other value is a failure: no session exists then,
///         so do not call csdk_deinit().
int csdk_init(void);

/// Returns the next resolution of the camera. The SDK chooses the order. It may
/// return a resolution more than once.
///
/// @param handle  the current value of `csdk.handle`
/// @param width   receives the width in pixels
/// @param height  receives the height in pixels
/// @return 0 if there is a resolution. Any other value, including a negative
///         one, ends the list; `width` and `height` are then unspecified.
int csdk_next_resolution(int handle, int* width, int* height);

/// Ends the session that csdk_init() started, and releases its resources. The
/// result can be ignored, because a program cannot react to a failure.
int csdk_deinit(void);

/* The SDK was compiled with this layout, so a compiler with a different one must
 * not build the program. Even compilers without static_assert reject an array of
 * negative size, and their error message contains the array's name. */
/** @cond */
/* NOLINTNEXTLINE(bugprone-macro-parentheses): `fact` is the name that is declared */
#define CSDK_REQUIRE(fact, condition) typedef char fact[(condition) ? 1 : -1]
CSDK_REQUIRE(csdk_is_20_bytes, sizeof(struct csdk_state) == 20);
CSDK_REQUIRE(csdk_handle_is_the_first_word, offsetof(struct csdk_state, handle) == 0);
CSDK_REQUIRE(csdk_numbers_are_32_bit, sizeof(int) == 4);
CSDK_REQUIRE(csdk_settings_is_40_bytes, sizeof(struct csdk_settings_record) == 40);
/* The offsets are 0, 4, 8, 12 and 13 on 32-bit machines. */
CSDK_REQUIRE(csdk_settings_fields_follow_one_another,
             offsetof(struct csdk_settings_record, application_name) == 0 &&
                 offsetof(struct csdk_settings_record, vendor_name) == sizeof(void*) &&
                 offsetof(struct csdk_settings_record, mode) == 2 * sizeof(void*) &&
                 offsetof(struct csdk_settings_record, option) == 2 * sizeof(void*) + 4 &&
                 offsetof(struct csdk_settings_record, flags) == 2 * sizeof(void*) + 5);
#undef CSDK_REQUIRE
/** @endcond */

#ifdef __cplusplus
}
#endif

#endif
