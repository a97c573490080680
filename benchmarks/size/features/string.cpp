#include "misc/zntl_String.h"

int main(int, char** arguments) { return static_cast<int>(zntl::String(arguments[0]).size()); }
