// An uncaught exception ends the program abnormally, and nobody reads a camera's standard error.
// The C++ runtime's own handler would print the exception's name, and bring the name demangler
// along: a third of the program and many symbols for the loader to bind at every start. This one
// takes its place where the runtime is linked in.

#include <cstdlib>

namespace __gnu_cxx {

void __verbose_terminate_handler();

void __verbose_terminate_handler() { std::abort(); } // NOLINT(bugprone-reserved-identifier)

} // namespace __gnu_cxx
