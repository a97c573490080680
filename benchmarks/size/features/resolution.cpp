#include "video/znvl_Resolution.h"

int main(int count, char** arguments) {
    znvl::Resolution size;
    size.fromString(arguments[0]);
    return static_cast<int>(size.scale({count, count}).toNameString().size());
}
