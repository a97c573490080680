#include "misc/zntl_Exception.h"

#include "misc/internal/zntl_decimal.h"

namespace zntl {

Exception::Exception(std::string const& message) : message_(message) {}

char const* Exception::what() const noexcept { return message_.c_str(); }

std::string locatedMessage(char const* source, int line, char const* className, char const* text) {
    std::string message(source);
    message += " (";
    appendDecimal(message, line);
    message += "): ";
    message += className;
    message += "::";
    message += text;
    return message;
}

} // namespace zntl
