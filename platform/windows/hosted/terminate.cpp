// What the run-time does where no handler takes an exception. Its own says so on standard error, by
// the type's name as it stands in a source, and takes along what such names are made of: a twelfth
// of the library. A host's standard error is not a library's to write to.
#include <cstdlib>

namespace __gnu_cxx {

void __verbose_terminate_handler();

void __verbose_terminate_handler() {
    std::abort();
}

} // namespace __gnu_cxx
