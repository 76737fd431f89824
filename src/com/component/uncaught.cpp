// An exception that nobody catches ends the process, here as with the runtime's own handler. That one prints
// the name of the exception to a console first, which no host reads, and needs the C++ library's demangler
// for it.
#include <cstdlib>

// The names are the runtime's.
namespace __gnu_cxx {  // NOLINT(bugprone-reserved-identifier)
// NOLINTNEXTLINE(bugprone-reserved-identifier,readability-identifier-naming)
[[noreturn]] void __verbose_terminate_handler();

// NOLINTNEXTLINE(bugprone-reserved-identifier,readability-identifier-naming)
void __verbose_terminate_handler() {
    std::abort();
}
}  // namespace __gnu_cxx
