// The value that functions keep between their buffers and their return address, and what is done when it was
// overwritten
// (-fstack-protector). The runtime that is linked in has both, but asks a cryptographic provider for the
// value: at each start of a process that brought in three libraries and took most of the time of loading the
// DLL.
#include <windows.h>

#include <ntsecapi.h>

#include <cstdint>

extern "C" {

// NOLINTBEGIN(bugprone-reserved-identifier,readability-identifier-naming): the compiler's names
// A zero byte ends what an overrun of a text can write.
extern std::uintptr_t __stack_chk_guard;
std::uintptr_t __stack_chk_guard = 0xFF0A0D00;

// The stack cannot be trusted any more, so nothing is unwound and no handler is asked.
[[noreturn]] void __stack_chk_fail();
void __stack_chk_fail() {
    constexpr UINT stackBufferOverrun = 0xC0000409;
    ::TerminateProcess(::GetCurrentProcess(), stackBufferOverrun);
    __builtin_unreachable();
}
// NOLINTEND(bugprone-reserved-identifier,readability-identifier-naming)
}

namespace {

// Before any other code of ours: no function that compares the value is under way.
[[gnu::constructor(101), gnu::no_stack_protector]] void drawGuard() noexcept {
    std::uintptr_t value = 0;
    if (::RtlGenRandom(&value, sizeof(value)))
        __stack_chk_guard = value & ~std::uintptr_t{0xFF};
}

}  // namespace
