#include "misc/zntl_String.h"

int main(int count, char**) {
    return static_cast<int>(zntl::String::fromFormat("%dx%d", count, count).size());
}
