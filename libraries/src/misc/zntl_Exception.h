#pragma once

#include <exception>
#include <string>

namespace zntl {

/// The one exception type of the library. Thrown by value.
class Exception : public std::exception {
public:
    /// Carries `message`. Throws std::bad_alloc when there is no memory for the copy.
    explicit Exception(std::string const& message);
    Exception(Exception const&) = default;
    Exception& operator=(Exception const&) = default;
    ~Exception() override = default;

    /// The message, NUL-terminated; valid as long as the exception lives and is not assigned to.
    char const* what() const noexcept override;

private:
    std::string message_;
};

/// Composes the message of a fault that is reported from a definite place in a source file:
/// "SOURCE (LINE): CLASS::TEXT". Every located message of the library is made here.
///
/// `source` is the file's path as the build names it, without its extension; `text` names the
/// operation with "()" and then the fault. No pointer may be null.
std::string locatedMessage(char const* source, int line, char const* className, char const* text);

} // namespace zntl
