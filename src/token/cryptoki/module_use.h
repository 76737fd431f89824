// Who uses which module: one at a time in this process, since a module that is initialised refuses a second
// user, and that one's C_Finalize would take it away from the first.
#pragma once

#include <windows.h>

#include <string>

namespace cryptoki {

namespace detail {
struct UseRecord;
}

// Holds a module for its user. What holds it is no lock: foreign code that never returns keeps nobody but
// those who want the same module waiting. Any thread; end it on the one that began it.
class ModuleUse {
public:
    // Waits until nobody else uses the module of that file, as long as `milliseconds` (INFINITE) allow.
    // Throws CryptokiException CKR_CRYPTOKI_ALREADY_INITIALIZED of "C_Initialize" when the time is up, at
    // once for a module that is lost, and for one that this very thread is in the middle of using (a module
    // that shows a window dispatches messages, and so the calls of scripts).
    ModuleUse(std::wstring path, DWORD milliseconds);
    ModuleUse(ModuleUse&& other) noexcept;
    ModuleUse& operator=(ModuleUse&&) = delete;
    ~ModuleUse();

    // The module did not return from a call and is not to be used again as long as the process lives.
    void lose() noexcept;

private:
    detail::UseRecord* record_ = nullptr;
};

}  // namespace cryptoki
