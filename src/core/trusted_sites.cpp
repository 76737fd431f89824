#include "core/trusted_sites.h"

#include "core/check.h"
#include "core/handles.h"
#include "core/log.h"

#include <algorithm>
#include <iterator>
#include <mutex>
#include <shared_mutex>

namespace Corvane {
namespace {

// The registry's limit for the name of a value is below this, so that a name which still does not fit is
// not there to be read.
constexpr std::size_t nameBufferLimit = 65535;
constexpr std::size_t firstNameBuffer = 261;

bool isLetter(wchar_t c) {
    return ::IsCharAlphaNumericW(c) != FALSE;
}

bool covers(const std::vector<SitePattern>& patterns, const std::wstring& address) {
    if (address.empty()) {
        return false;
    }
    const SitePattern site = readSite(address);
    return std::any_of(patterns.begin(), patterns.end(),
                       [&](const SitePattern& pattern) { return matchesSite(pattern, site); });
}

// The pattern that stands for a page's site.
SitePattern patternOf(const std::wstring& url) {
    SitePattern pattern = readSite(url);
    if (!isValidSitePattern(pattern)) {
        throw Exception(E_INVALID_DOMAIN);
    }
    pattern.rest.clear();
    return pattern;
}

// Reads the name of a key's value into the front of `name`, which grows as needed, and tells its length.
LSTATUS valueName(HKEY key, DWORD index, std::wstring& name, DWORD& length) {
    for (;;) {
        length = static_cast<DWORD>(name.size());
        const LSTATUS status =
            ::RegEnumValueW(key, index, name.data(), &length, nullptr, nullptr, nullptr, nullptr);
        if (status != ERROR_MORE_DATA || name.size() >= nameBufferLimit) {
            return status;
        }
        name.resize(name.size() * 2);
    }
}

// The valid patterns of one hive; none when it cannot be read to its end.
std::vector<SitePattern> readHive(HKEY hive) {
    RegistryKey key;
    if (::RegOpenKeyExW(hive, trustedSitesKey, 0, KEY_READ, key.put()) != ERROR_SUCCESS) {
        return {};
    }
    std::vector<SitePattern> patterns;
    std::wstring name(firstNameBuffer, L'\0');
    DWORD length = 0;
    LSTATUS status = ERROR_SUCCESS;
    for (DWORD index = 0; (status = valueName(key.get(), index, name, length)) == ERROR_SUCCESS; ++index) {
        SitePattern pattern = readSite(name.substr(0, length));
        if (isValidSitePattern(pattern)) {
            patterns.push_back(std::move(pattern));
        }
    }
    if (status != ERROR_NO_MORE_ITEMS) {
        patterns.clear();
    }
    return patterns;
}

}  // namespace

SitePattern readSite(std::wstring text) {
    ::CharLowerBuffW(text.data(), static_cast<DWORD>(text.size()));
    return parseSite(text, isLetter);
}

bool TrustedSitesBase::isTrusted(const std::wstring& address) const {
    return covers(trusted_, address);
}

RegTrustedSites::RegTrustedSites() {
    for (const HKEY hive : {HKEY_CURRENT_USER, HKEY_LOCAL_MACHINE}) {
        std::vector<SitePattern> patterns = readHive(hive);
        std::move(patterns.begin(), patterns.end(), std::back_inserter(trusted_));
    }
}

SessionTrustedSites& SessionTrustedSites::instance() {
    static SessionTrustedSites sites;
    return sites;
}

bool SessionTrustedSites::isTrusted(const std::wstring& address) const {
    const std::shared_lock lock(mutex_);
    return TrustedSitesBase::isTrusted(address);
}

void SessionTrustedSites::add(const std::wstring& url, bool banned) {
    writeLog(LogLevel::info, L"Corvane::SessionTrustedSites::add", L"[in]url: ", url, L" [in]banned: ",
             banned);
    SitePattern pattern = patternOf(url);
    const std::lock_guard lock(mutex_);
    (banned ? refused_ : trusted_).push_back(std::move(pattern));
}

void SessionTrustedSites::addToRegistry(const std::wstring& url) const {
    writeLog(LogLevel::info, L"Corvane::SessionTrustedSites::addToRegistry", L"[in]url: ", url);
    const std::wstring name = sitePatternText(patternOf(url));
    RegistryKey key;
    checkStatus(::RegCreateKeyExW(HKEY_CURRENT_USER, trustedSitesKey, 0, nullptr, 0, KEY_ALL_ACCESS, nullptr,
                                  key.put(), nullptr),
                E_REG_KEY_CREATE, L"RegCreateKeyExW");
    // Only the name is ever read.
    const DWORD data = 1;
    checkStatus(::RegSetValueExW(key.get(), name.c_str(), 0, REG_DWORD, reinterpret_cast<const BYTE*>(&data),
                                 sizeof(data)),
                E_REG_VALUE_SET, L"RegSetValueExW");
}

bool SessionTrustedSites::reject(const std::wstring& url) const {
    const std::shared_lock lock(mutex_);
    return covers(refused_, url);
}

}  // namespace Corvane
