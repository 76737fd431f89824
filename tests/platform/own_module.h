// Where the program or library lies that this is part of.
#pragma once

#include <windows.h>

#include <string>

extern "C" IMAGE_DOS_HEADER __ImageBase;  // NOLINT(bugprone-reserved-identifier): the linker's

namespace Corvane::Platform {

// Without asking the loader, which may be busy for ever.
inline std::wstring ownPath() {
    wchar_t path[1024];
    return {path, ::GetModuleFileNameW(reinterpret_cast<HMODULE>(&__ImageBase), path, 1024)};
}

}  // namespace Corvane::Platform
