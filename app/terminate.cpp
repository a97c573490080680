// An uncaught exception ends the program abnormally, and nobody reads a camera's standard error.
// The C++ runtime's own handler would print the exception's name, and bring the name demangler
// along: a third of the program and many symbols for the loader to bind at every start. This one
// takes its place where the runtime is linked in.

#include <cstdlib>

namespace __gnu_cxx {

// NOLINTBEGIN(bugprone-reserved-identifier): the name is the runtime's

void __verbose_terminate_handler();

void __verbose_terminate_handler() { std::abort(); }

// NOLINTEND(bugprone-reserved-identifier)

} // namespace __gnu_cxx
