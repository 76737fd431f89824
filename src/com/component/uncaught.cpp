// An exception that nobody catches ends the process, here as with the runtime's own handler. That one prints
// the name of the exception to a console first, which no host reads, and needs the C++ library's demangler
// for it.
#include <cstdlib>
#include <exception>

// NOLINTNEXTLINE(bugprone-reserved-identifier,readability-identifier-naming): the names are the runtime's
void __gnu_cxx::__verbose_terminate_handler() {
    std::abort();
}
