#include "token/cryptoki/module_file.h"

#include <windows.h>

#include <algorithm>
#include <string_view>

namespace cryptoki {
namespace {

// What a function of the system writes that returns how long it is, or how long it would be.
template <class Call>
std::wstring textOf(Call call) {
    std::wstring text(MAX_PATH, L'\0');
    for (;;) {
        const DWORD length = call(text.data(), static_cast<DWORD>(text.size()));
        if (length < text.size()) {
            text.resize(length);
            return text;
        }
        text.resize(length + std::size_t{MAX_PATH});
    }
}

std::wstring fileOf(HMODULE module) {
    return textOf([module](wchar_t* text, DWORD size) { return ::GetModuleFileNameW(module, text, size); });
}

bool isFile(const std::wstring& path) noexcept {
    const DWORD attributes = ::GetFileAttributesW(path.c_str());
    return attributes != INVALID_FILE_ATTRIBUTES && !(attributes & FILE_ATTRIBUTE_DIRECTORY);
}

// "C:\..." or "\\server\...": one that leads to the same place whatever the current folder and drive are.
bool isFull(std::wstring_view path) noexcept {
    return (path.size() > 2 && path[1] == L':' && (path[2] == L'\\' || path[2] == L'/')) ||
           path.starts_with(L"\\\\");
}

// Empty where the folder does not have it.
std::wstring findIn(std::wstring_view folder, const std::wstring& name) {
    if (!isFull(folder))
        return {};
    std::wstring path(folder);
    if (!path.ends_with(L'\\'))
        path += L'\\';
    path += name;
    return isFile(path) ? path : std::wstring();
}

std::wstring findInList(std::wstring_view folders, const std::wstring& name) {
    while (!folders.empty()) {
        std::wstring_view folder = folders.substr(0, folders.find(L';'));
        folders.remove_prefix(std::min(folder.size() + 1, folders.size()));
        if (folder.size() > 1 && folder.front() == L'"' && folder.back() == L'"')
            folder = folder.substr(1, folder.size() - 2);
        if (std::wstring path = findIn(folder, name); !path.empty())
            return path;
    }
    return {};
}

}  // namespace

std::wstring findModuleFile(const std::wstring& name) {
    if (isFull(name))
        return isFile(name) ? name : std::wstring();
    if (HMODULE loaded = ::GetModuleHandleW(name.c_str()))
        return fileOf(loaded);
    const std::wstring program = fileOf(nullptr);
    if (std::wstring path = findIn(program.substr(0, program.rfind(L'\\')), name); !path.empty())
        return path;
    const std::wstring system =
        textOf([](wchar_t* text, DWORD size) { return ::GetSystemDirectoryW(text, size); });
    if (std::wstring path = findIn(system, name); !path.empty())
        return path;
    return findInList(
        textOf([](wchar_t* text, DWORD size) { return ::GetEnvironmentVariableW(L"PATH", text, size); }),
        name);
}

}  // namespace cryptoki
