// Puts the stand-ins into the import tables of every module that is not the system's: of those that are there
// when this DLL is loaded, and of those that come later.
#include "../import_slots.h"
#include "../own_module.h"
#include "functions.h"

#include <psapi.h>

#include <algorithm>

namespace Corvane::Platform::Messages {
namespace {

void patch(HMODULE module) {
    wchar_t path[MAX_PATH];
    wchar_t windows[MAX_PATH];
    const DWORD length = ::GetWindowsDirectoryW(windows, MAX_PATH);
    ::GetModuleFileNameW(module, path, MAX_PATH);
    const bool isSystem = ::CompareStringOrdinal(path, static_cast<int>(length), windows,
                                                 static_cast<int>(length), TRUE) == CSTR_EQUAL;
    if (isSystem || module == ownModule())
        return;
    Test::forEachImport(module, [](std::string_view name, void*& slot) {
        const auto found = std::ranges::find(replacements(), name, &Replacement::name);
        if (found != replacements().end())
            Test::putIntoSlot(slot, found->function);
    });
}

// ntdll's, which no header of MinGW has (LdrRegisterDllNotification in Microsoft's documentation).
struct LoadedModule {
    ULONG flags;
    const void* fullName;
    const void* baseName;
    void* base;
    ULONG size;
};
void CALLBACK onModule(ULONG reason, const LoadedModule* loaded, void*) {
    constexpr ULONG isLoaded = 1;
    if (reason == isLoaded)
        patch(static_cast<HMODULE>(loaded->base));
}
using RegisterNotification = LONG(NTAPI*)(ULONG, decltype(&onModule), void*, void**);

void patchAll() {
    HMODULE modules[1024];
    DWORD size = 0;
    ::EnumProcessModules(::GetCurrentProcess(), modules, sizeof modules, &size);
    std::for_each(modules, modules + std::min<std::size_t>(size / sizeof(HMODULE), std::size(modules)),
                  patch);
    void* cookie = nullptr;
    const FARPROC notify = ::GetProcAddress(::GetModuleHandleW(L"ntdll.dll"), "LdrRegisterDllNotification");
    reinterpret_cast<RegisterNotification>(reinterpret_cast<void*>(notify))(0, onModule, nullptr, &cookie);
}

}  // namespace
}  // namespace Corvane::Platform::Messages

// The module stays for the process's life: import tables point into it.
BOOL WINAPI DllMain(HINSTANCE module, DWORD reason, LPVOID) {
    if (reason == DLL_PROCESS_ATTACH) {
        HMODULE pinned = nullptr;
        ::GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_PIN,
                             reinterpret_cast<LPCWSTR>(module), &pinned);
        ::DisableThreadLibraryCalls(module);
        Corvane::Platform::Messages::patchAll();
    }
    return TRUE;
}
