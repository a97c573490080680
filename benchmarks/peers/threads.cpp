// Shared arrays in a program that has a second thread: from then on the standard library's shared
// pointers count atomically too.

#include "support/array_rows.h"

#include <thread>
#include <unistd.h>

namespace bench {

namespace {

[[maybe_unused]] bool const added = [] {
    std::thread([] { pause(); }).detach();
    addArrayRows(", with threads");
    return true;
}();

} // namespace

} // namespace bench
