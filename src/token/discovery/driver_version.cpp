#include "token/discovery/driver_version.h"

#include "core/log.h"
#include "token/discovery/registry_text.h"

#include <windows.h>

#include <algorithm>
#include <cwctype>

namespace Corvane::Crypto {
namespace {

constexpr wchar_t productsKey[] =
    L"SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\Installer\\UserData\\S-1-5-18\\Products\\";

// What a page passes chooses among the products, and leads nowhere else.
bool isGuid(std::wstring_view text) noexcept {
    return !text.empty() && std::ranges::all_of(text, [](wchar_t c) {
        return (c < 0x80 && std::iswxdigit(c)) || c == L'-' || c == L'{' || c == L'}';
    });
}

// Major and minor number in a byte each, the rest in two.
std::wstring versionText(std::uint32_t version) {
    return std::to_wstring(version >> 24) + L"." + std::to_wstring(version >> 16 & 0xFF) + L"." +
           std::to_wstring(version & 0xFFFF);
}

std::wstring readVersion(const std::wstring& key, std::uint32_t view) {
    if (auto text = readMachineText(key, L"DisplayVersion", view); text && !text->empty())
        return *std::move(text);
    const auto number = readMachineNumber(key, L"Version", view);
    return number ? versionText(*number) : std::wstring();
}

}  // namespace

std::wstring getTokenDriverVersion(std::wstring_view guid) {
    writeLog(LogLevel::debug, L"Corvane::Crypto::getTokenDriverVersion", L"[in] guid: ", guid);
    if (!isGuid(guid))
        return {};
    const std::wstring key = std::wstring(productsKey).append(guid) + L"\\InstallProperties";
    // Drivers of either bitness may be on record on either side.
    for (const std::uint32_t view : {0u, unsigned{KEY_WOW64_64KEY}, unsigned{KEY_WOW64_32KEY}}) {
        if (std::wstring version = readVersion(key, view); !version.empty())
            return version;
    }
    return {};
}

}  // namespace Corvane::Crypto
