// Replaces the C++ runtime's handler for uncaught exceptions, which prints the exception's name.
// That needs the name demangler: a third of the program, and many symbols for the loader to bind at
// every start. Nobody reads a camera's standard error, so this handler only ends the program
// abnormally.

#include <cstdlib>

namespace __gnu_cxx {

// NOLINTBEGIN(bugprone-reserved-identifier): the name is the runtime's

void __verbose_terminate_handler();

void __verbose_terminate_handler() { std::abort(); }

// NOLINTEND(bugprone-reserved-identifier)

} // namespace __gnu_cxx
