#include "misc/zntl_SmartArray.h"

int main(int count, char**) {
    zntl::SmartArray<char> const array(new char[4](), 4);
    zntl::SmartArray<char> const copy = array;
    return array[static_cast<unsigned int>(count) + 4] + *copy;
}
