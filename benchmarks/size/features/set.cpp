#include "streams/znsl_Set.h"
#include "video/znvl_Resolution.h"

int main(int count, char**) {
    znsl::Set<znvl::Resolution> set;
    set.emplace(count, count);
    return static_cast<int>(set.begin()->height.getValue());
}
