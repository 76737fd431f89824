// The module that a function of this program or library lies in.
#pragma once

#include <windows.h>

#include <string>

namespace Corvane::Platform {

inline HMODULE ownModule() {
    HMODULE module = nullptr;
    ::GetModuleHandleExW(
        GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
        reinterpret_cast<LPCWSTR>(&ownModule), &module);
    return module;
}

inline std::wstring ownPath() {
    wchar_t path[MAX_PATH];
    return {path, ::GetModuleFileNameW(ownModule(), path, MAX_PATH)};
}

}  // namespace Corvane::Platform
