#include "core/windows_version.h"

#include "core/exception.h"

#include <windows.h>

#include <cstring>

namespace Corvane {

std::wstring windowsVersion() {
    // GetVersionEx answers what the host's manifest asks for; the kernel's own answer does not.
    using RtlGetVersion = LONG(WINAPI*)(OSVERSIONINFOW*);
    RtlGetVersion getVersion = nullptr;
    if (const HMODULE kernel = ::GetModuleHandleW(L"ntdll.dll")) {
        const FARPROC function = ::GetProcAddress(kernel, "RtlGetVersion");
        std::memcpy(&getVersion, &function, sizeof(getVersion));
    }
    OSVERSIONINFOW version{};
    version.dwOSVersionInfoSize = sizeof(version);
    if (!getVersion || getVersion(&version) != 0)
        throw Exception(E_GET_WINDOWS_VERSION);
    return std::to_wstring(version.dwMajorVersion) + L"." + std::to_wstring(version.dwMinorVersion) + L"." +
           std::to_wstring(version.dwBuildNumber);
}

}  // namespace Corvane
