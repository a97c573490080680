#include "streams/znsl_Set.h"
#include "video/znvl_Resolution.h"

#include <vector>

int main(int count, char**) {
    znsl::Set<znvl::Resolution> set;
    set.emplace(count, count);
    std::vector<unsigned char> bytes(set.getBinLength());
    set.toBin(bytes.data());
    return static_cast<int>(set.fromBin(bytes.data(), static_cast<unsigned int>(bytes.size())));
}
