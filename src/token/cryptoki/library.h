// A vendor's module in single steps, none of which throws, logs, takes a lock of ours or allocates our
// memory: they are also done on a thread that is ended in the middle of one.
#pragma once

#include "core/handle.h"
#include "token/cryptoki/cryptoki.h"

#include <string>

namespace cryptoki {

namespace detail {

struct LibraryTraits {
    using Type = HMODULE;
    static Type invalid() noexcept { return nullptr; }
    static void close(Type library) noexcept { ::FreeLibrary(library); }
};

// Only who has initialised a module finalises it.
struct InitializationTraits {
    using Type = const CK_FUNCTION_LIST*;
    static Type invalid() noexcept { return nullptr; }
    static void close(Type functions) noexcept { functions->C_Finalize(nullptr); }
};

}  // namespace detail

// What a step came to.
struct StepResult {
    const char* call = nullptr;  // which one failed; null where all is well
    CK_RV value = CKR_OK;        // what it returned, where it is the module's
    DWORD error = 0;             // the system's number, where it is the system's: LoadLibrary, GetProcAddress

    bool failed() const noexcept { return call != nullptr; }
};

class Library {
public:
    // Loads the file, by its full path, with the libraries that lie beside it, and asks for its functions.
    StepResult load(const wchar_t* path) noexcept;
    // For a module that is loaded.
    StepResult initialize() noexcept;
    // Gives back what initialize() and load() took; the destructor does both.
    void finalize() noexcept { initialization_.reset(); }
    void unload() noexcept { library_.reset(); }

    // Null before it is loaded.
    const CK_FUNCTION_LIST* functions() const noexcept { return functions_; }

private:
    Corvane::UniqueHandle<detail::LibraryTraits> library_;
    const CK_FUNCTION_LIST* functions_ = nullptr;
    Corvane::UniqueHandle<detail::InitializationTraits> initialization_;
};

// Logs and throws what a step failed with: CryptokiException; LibraryException for the system's calls;
// Exception E_TOKEN_FUNCTION_LIST for a module without functions. `path` is the module's.
[[noreturn]] void throwStep(const StepResult& result, const std::wstring& path);

}  // namespace cryptoki
