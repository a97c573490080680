#include "misc/zntl_String.h"

int main(int, char** arguments) {
    zntl::String const text(arguments[0]);
    return static_cast<int>(zntl::String::encodeHtml(text).size() +
                            zntl::String::decodeHtml(text).size() +
                            text.replaceElement("a", "b").size());
}
