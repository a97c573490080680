#pragma once

#include <exception>
#include <string>

namespace zntl {

/// The library's own exception type. Thrown by value.
class Exception : public std::exception {
public:
    /// Copies `message`. Throws std::bad_alloc if the allocation fails.
    explicit Exception(std::string const& message);
    Exception(Exception const&) = default;
    Exception& operator=(Exception const&) = default;
    ~Exception() override = default;

    /// The message. The pointer is valid until the exception is destroyed or assigned to.
    char const* what() const noexcept override;

private:
    std::string message_;
};

/// Builds a message that contains a source location: "SOURCE (LINE): CLASS::TEXT".
///
/// `source` is the path of a source file without its extension. `text` names the operation and then
/// the fault, as in "toXML() - not implemented". No pointer may be null.
std::string locatedMessage(char const* source, int line, char const* className, char const* text);

} // namespace zntl
