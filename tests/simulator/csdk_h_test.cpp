// csdk.h compiles as C++, and everything that it declares can be used. Its functions have C
// linkage.
#include "csdk.h"

int csdk_h_as_cpp();

int csdk_h_as_cpp() {
    int width = 0;
    int height = 0;

    csdk_settings.application_name = "application";
    csdk_settings.vendor_name = "vendor";
    csdk_settings.mode = 1;
    csdk_settings.option = 1;
    csdk_settings.flags &= static_cast<uint8_t>(~CSDK_FLAGS_OPTION);
    return csdk_init() + csdk_next_resolution(csdk.handle, &width, &height) + csdk_deinit();
}
