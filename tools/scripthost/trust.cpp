#include "trust.h"

#include "sites/trusted_sites.h"

#include <windows.h>

#include <stdexcept>

namespace ScriptHost {

void trustSite(const std::wstring& address) {
    Corvane::SitePattern site = Corvane::readSite(address);
    if (site.scheme.empty() || !Corvane::isValidSitePattern(site))
        throw std::runtime_error("no list of trusted sites can hold this address");
    site.rest.clear();
    const DWORD value = 1;  // the name is what counts
    if (::RegSetKeyValueW(HKEY_CURRENT_USER, Corvane::trustedSitesKey, sitePatternText(site).c_str(),
                          REG_DWORD, &value, sizeof value) != ERROR_SUCCESS)
        throw std::runtime_error("the address cannot be added to the trusted sites");
}

std::wstring plainHostAddress() {
    wchar_t path[MAX_PATH] = L"";
    ::GetModuleFileNameW(nullptr, path, MAX_PATH);
    const std::wstring program = path;
    return L"name://" + program.substr(program.find_last_of(L'\\') + 1);
}

}  // namespace ScriptHost
