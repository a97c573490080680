// A CGI program that lists the camera's small resolutions in ascending order. It prints an HTTP
// header and one line of JSON, in which the first resolution is marked as the default.

#include "csdk.h"
#include "streams/znsl_Set.h"
#include "system/znml_constants.h" // Contract: this file has its own copy, though nothing reads it
#include "video/znvl_Resolution.h"

#include <cstdio>

namespace {

constexpr unsigned int maxWidth = 320;
constexpr unsigned int maxHeight = 200;

using Resolutions = znsl::Set<znvl::Resolution>;

void fillSettings() {
    csdk_settings.flags &= static_cast<uint8_t>(~CSDK_FLAGS_OPTION);
    csdk_settings.application_name = "Resolution";
    csdk_settings.vendor_name = "Zenthra, Inc.";
    csdk_settings.mode = 1;
    csdk_settings.option = 1;
}

/// Contract: the comparison is unsigned, so sizes with a negative width or height are not listed,
/// although the set orders signed numbers. Clients expect the same list from every version.
bool isSmall(int width, int height) {
    return static_cast<unsigned int>(width) <= maxWidth &&
           static_cast<unsigned int>(height) <= maxHeight;
}

Resolutions collectSmallResolutions() {
    Resolutions resolutions;
    int width = 0;
    int height = 0;
    // Reads csdk.handle again for each call, because any call of the SDK may change it.
    while (csdk_next_resolution(csdk.handle, &width, &height) == 0) {
        if (isSmall(width, height))
            resolutions.insert(znvl::Resolution(width, height));
    }
    return resolutions;
}

void printEntries(Resolutions const& resolutions) {
    bool isFirst = true;
    for (znvl::Resolution const& resolution : resolutions) {
        zntl::String const size = zntl::String::fromFormat("%dx%d", resolution.width.getValue(),
                                                           resolution.height.getValue());
        if (isFirst) {
            std::printf("{\"resolution\": \"%s\", \"default\": true }", size.c_str());
            isFirst = false;
        } else {
            std::putchar(',');
            std::printf("{\"resolution\": \"%s\", \"default\": false }", size.c_str());
        }
    }
}

} // namespace

int main() {
    fillSettings();
    if (csdk_init() != 0)
        return 1;
    std::puts("Content-Type: text/plain\r\n\r"); // puts adds the last newline
    std::putchar('[');
    Resolutions const resolutions = collectSmallResolutions();
    printEntries(resolutions);
    std::putchar(']');
    csdk_deinit();
    return 0;
}
