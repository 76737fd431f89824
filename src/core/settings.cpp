#include "core/settings.h"

#include <windows.h>

#include <array>

namespace Corvane {
namespace {

std::array<HKEY, 2> hives() noexcept {
    return {HKEY_CURRENT_USER, HKEY_LOCAL_MACHINE};
}

std::optional<std::wstring> readText(HKEY hive, const wchar_t* name) {
    // Another process may replace the value by a longer one between asking for its size and reading it.
    std::wstring text;
    DWORD size = 0;
    LSTATUS status = ::RegGetValueW(hive, settingsKey, name, RRF_RT_REG_SZ, nullptr, nullptr, &size);
    while (status == ERROR_SUCCESS || status == ERROR_MORE_DATA) {
        text.resize(size / sizeof(wchar_t) + 1);
        size = static_cast<DWORD>(text.size() * sizeof(wchar_t));
        status = ::RegGetValueW(hive, settingsKey, name, RRF_RT_REG_SZ, nullptr, text.data(), &size);
        if (status == ERROR_SUCCESS) {
            text.resize(wcsnlen(text.data(), text.size()));
            return text;
        }
    }
    return std::nullopt;
}

}  // namespace

std::optional<std::uint32_t> readNumberSetting(const wchar_t* name) {
    for (const HKEY hive : hives()) {
        DWORD value = 0;
        DWORD size = sizeof(value);
        if (::RegGetValueW(hive, settingsKey, name, RRF_RT_REG_DWORD, nullptr, &value, &size) ==
            ERROR_SUCCESS)
            return value;
    }
    return std::nullopt;
}

std::optional<std::wstring> readTextSetting(const wchar_t* name) {
    for (const HKEY hive : hives()) {
        if (auto text = readText(hive, name))
            return text;
    }
    return std::nullopt;
}

}  // namespace Corvane
