#include "trust.h"

#include <windows.h>

#include <stdexcept>

namespace ScriptHost {

void trustSite(const std::wstring& address) {
    const std::size_t colon = address.find(L"://");
    if (colon == std::wstring::npos)
        return;
    const std::wstring site = address.substr(0, address.find_first_of(L"/?#:", colon + 3));
    const DWORD value = 1;  // the name is what counts
    if (::RegSetKeyValueW(HKEY_CURRENT_USER, L"SOFTWARE\\ZimVetrel\\VetrelCorvane\\TrustedSites",
                          site.c_str(), REG_DWORD, &value, sizeof value) != ERROR_SUCCESS)
        throw std::runtime_error("the address cannot be added to the trusted sites");
}

std::wstring plainHostAddress() {
    wchar_t path[MAX_PATH] = L"";
    ::GetModuleFileNameW(nullptr, path, MAX_PATH);
    const std::wstring program = path;
    return L"name://" + program.substr(program.find_last_of(L'\\') + 1);
}

}  // namespace ScriptHost
