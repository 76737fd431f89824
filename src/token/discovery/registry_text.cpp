#include "token/discovery/registry_text.h"

#include "core/handles.h"

#include <cwchar>

namespace Corvane {
namespace {

RegistryKey openKey(const std::wstring& key, DWORD view) noexcept {
    RegistryKey opened;
    ::RegOpenKeyExW(HKEY_LOCAL_MACHINE, key.c_str(), 0, KEY_QUERY_VALUE | view, opened.put());
    return opened;
}

}  // namespace

std::optional<std::wstring> readMachineText(const std::wstring& key, const wchar_t* name,
                                            std::uint32_t view) {
    const RegistryKey opened = openKey(key, view);
    // No value that is read here comes near that size; a longer one is none of them.
    std::wstring text(4096, L'\0');
    auto size = static_cast<DWORD>(text.size() * sizeof(wchar_t));
    if (!opened || ::RegGetValueW(opened.get(), nullptr, name, RRF_RT_REG_SZ, nullptr, text.data(), &size) !=
                       ERROR_SUCCESS)
        return std::nullopt;
    text.resize(std::wcslen(text.c_str()));
    return text;
}

std::optional<std::uint32_t> readMachineNumber(const std::wstring& key, const wchar_t* name,
                                               std::uint32_t view) {
    const RegistryKey opened = openKey(key, view);
    DWORD value = 0;
    DWORD size = sizeof value;
    if (!opened || ::RegGetValueW(opened.get(), nullptr, name, RRF_RT_REG_DWORD, nullptr, &value, &size) !=
                       ERROR_SUCCESS)
        return std::nullopt;
    return value;
}

bool machineKeyExists(const std::wstring& key) {
    return static_cast<bool>(openKey(key, 0));
}

}  // namespace Corvane
