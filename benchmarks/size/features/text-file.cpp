#include "misc/zntl_String.h"

int main(int, char** arguments) {
    zntl::String text;
    return text.fromFile(arguments[0]) && text.toFile(arguments[0]);
}
