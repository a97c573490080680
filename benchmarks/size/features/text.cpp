#include "misc/zntl_String.h"

int main(int, char** arguments) {
    zntl::String const text(arguments[0]);
    bool isInteger;
    return static_cast<int>(text.trim().size() + text.tokenize(",", "'").size() +
                            zntl::String::sanitize(text, "abc").size() +
                            text.extract("<", ">").size() + text.isNumeric(isInteger));
}
