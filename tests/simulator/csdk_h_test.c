/* csdk.h compiles as C, and everything that it declares can be used. */
#include "csdk.h"

int csdk_h_as_c(void);

int csdk_h_as_c(void) {
    struct csdk_state const state = csdk;
    struct csdk_settings_record settings = csdk_settings;
    int width;
    int height;

    settings.application_name = "application";
    settings.vendor_name = "vendor";
    settings.mode = 1;
    settings.option = 1;
    settings.flags &= (uint8_t)~CSDK_FLAGS_OPTION;
    csdk_settings = settings;
    return csdk_init() + csdk_next_resolution(state.handle, &width, &height) + csdk_deinit();
}
