#include "streams/znsl_MemIOStream.h"
#include "video/znvl_Resolution.h"

#include <cstdio>

int main() {
    znsl::MemIOStream queue;
    queue << zntl::String("Gate 3") << znvl::Resolution(640, 480);
    if (!queue.save("camera.objects") || !queue.load("camera.objects"))
        return 1;

    zntl::String place;
    znvl::Resolution size;
    queue >> place >> size;
    std::puts((place + ": " + size.toNameString()).c_str());
}
