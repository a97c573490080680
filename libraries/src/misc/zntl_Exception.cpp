#include "misc/zntl_Exception.h"

namespace zntl {

Exception::Exception(std::string const& message) : message_(message) {}

char const* Exception::what() const noexcept { return message_.c_str(); }

std::string locatedMessage(char const* source, int line, char const* className, char const* text) {
    return std::string(source) + " (" + std::to_string(line) + "): " + className + "::" + text;
}

} // namespace zntl
