// Replaces the C++ runtime's handler for uncaught exceptions, which prints the exception's name.
// For that it needs the name demangler, which is a third of the program and has many symbols that
// the loader binds at every start. Nobody reads a camera's standard error, so this handler only
// calls abort().

#include <cstdlib>

namespace __gnu_cxx {

// NOLINTBEGIN(bugprone-reserved-identifier): the runtime defines the name

void __verbose_terminate_handler();

// Unreached: the process is aborted before it can save the counts.
void __verbose_terminate_handler() { std::abort(); }

// NOLINTEND(bugprone-reserved-identifier)

} // namespace __gnu_cxx
