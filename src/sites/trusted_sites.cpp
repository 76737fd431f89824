#include "sites/trusted_sites.h"

#include "core/check.h"
#include "core/handles.h"
#include "core/log.h"
#include "sites/key_watch.h"

#include <algorithm>
#include <array>
#include <memory>
#include <mutex>
#include <shared_mutex>

namespace Corvane {
namespace {

// The registry's limit for the name of a value is below this, so that a name which still does not fit is
// not there to be read.
constexpr std::size_t nameBufferLimit = 65535;
constexpr std::size_t firstNameBuffer = 261;

// Letters of Korean script that are drawn as a blank.
constexpr std::wstring_view blankLetters = L"\x115F\x1160\x3164\xFFA0";

bool isLetter(wchar_t c) {
    return ::IsCharAlphaNumericW(c) != FALSE && blankLetters.find(c) == std::wstring_view::npos;
}

constexpr bool isAscii(wchar_t c) {
    return c < 0x80;
}

using SitePatterns = std::vector<SitePattern>;

bool covers(const SitePatterns& patterns, const SitePattern& page) {
    return std::ranges::any_of(patterns,
                               [&](const SitePattern& pattern) { return matchesSite(pattern, page); });
}

// The pattern that stands for a page's site.
SitePattern patternOf(const std::wstring& url) {
    SitePattern pattern = readSite(url);
    if (!isValidSitePattern(pattern))
        throw Exception(E_INVALID_DOMAIN);
    pattern.rest.clear();
    return pattern;
}

// Reads the name of a key's value into the front of `name`, which grows as needed, and tells its length.
LSTATUS valueName(HKEY key, DWORD index, std::wstring& name, DWORD& length) {
    for (;;) {
        length = static_cast<DWORD>(name.size());
        const LSTATUS status =
            ::RegEnumValueW(key, index, name.data(), &length, nullptr, nullptr, nullptr, nullptr);
        if (status != ERROR_MORE_DATA || name.size() >= nameBufferLimit)
            return status;
        name.resize(name.size() * 2);
    }
}

// Calls `visit` with the text and the pattern of each value's name. ERROR_SUCCESS when they were read to
// their end.
template <class Visit>
LSTATUS visitPatterns(HKEY key, Visit visit) {
    std::wstring name(firstNameBuffer, L'\0');
    DWORD length = 0;
    LSTATUS status = ERROR_SUCCESS;
    for (DWORD index = 0; (status = valueName(key, index, name, length)) == ERROR_SUCCESS; ++index) {
        const std::wstring text = name.substr(0, length);
        visit(text, readSite(text));
    }
    return status == ERROR_NO_MORE_ITEMS ? ERROR_SUCCESS : status;
}

// The valid patterns among the names of the key's values; none when they cannot be read to their end.
SitePatterns readPatterns(HKEY key) {
    SitePatterns patterns;
    const LSTATUS status = visitPatterns(key, [&](const std::wstring&, SitePattern pattern) {
        if (isValidSitePattern(pattern))
            patterns.push_back(std::move(pattern));
    });
    return status == ERROR_SUCCESS ? patterns : SitePatterns{};
}

void addInvalid(std::vector<InvalidSitePattern>& list, HKEY hive) {
    RegistryKey key;
    LSTATUS status = ::RegOpenKeyExW(hive, trustedSitesKey, 0, KEY_READ, key.put());
    if (status == ERROR_FILE_NOT_FOUND)
        return;
    if (status == ERROR_SUCCESS) {
        status = visitPatterns(key.get(), [&](const std::wstring& text, const SitePattern& pattern) {
            if (!isValidSitePattern(pattern))
                list.push_back({text, hive == HKEY_CURRENT_USER});
        });
    }
    checkStatus(status, E_REG_KEY_CREATE, L"RegEnumValueW");
}

// The patterns of one hive, read anew only when its key has changed.
class HivePatterns {
public:
    explicit HivePatterns(HKEY hive) : watch_(hive, trustedSitesKey) {}

    std::shared_ptr<const SitePatterns> current() {
        const std::lock_guard lock(mutex_);
        if (watch_.changed())
            patterns_ = nullptr;
        if (!patterns_) {
            patterns_ =
                std::make_shared<SitePatterns>(watch_.key() ? readPatterns(watch_.key()) : SitePatterns{});
        }
        return patterns_;
    }

private:
    SharedMutex mutex_;
    KeyWatch watch_;
    std::shared_ptr<const SitePatterns> patterns_;
};

}  // namespace

SitePattern readSite(const std::wstring& text) {
    std::wstring lower = text;
    ::CharLowerBuffW(lower.data(), static_cast<DWORD>(lower.size()));
    // Some letters beyond ASCII have one of ASCII as their small letter, and name another host all the same.
    std::transform(text.begin(), text.end(), lower.begin(), lower.begin(),
                   [](wchar_t from, wchar_t to) { return isAscii(to) && !isAscii(from) ? from : to; });
    return parseSite(lower, isLetter);
}

std::vector<InvalidSitePattern> invalidTrustedSites() {
    std::vector<InvalidSitePattern> list;
    addInvalid(list, HKEY_CURRENT_USER);
    addInvalid(list, HKEY_LOCAL_MACHINE);
    return list;
}

bool TrustedSitesBase::isTrusted(const SitePattern& page) const {
    return covers(trusted_, page);
}

bool RegTrustedSites::isTrusted(const SitePattern& page) const {
    static std::array hives{HivePatterns(HKEY_CURRENT_USER), HivePatterns(HKEY_LOCAL_MACHINE)};
    return std::any_of(hives.begin(), hives.end(),
                       [&](HivePatterns& hive) { return covers(*hive.current(), page); });
}

SessionTrustedSites& SessionTrustedSites::instance() {
    static SessionTrustedSites sites;
    return sites;
}

bool SessionTrustedSites::isTrusted(const SitePattern& page) const {
    const std::shared_lock lock(mutex_);
    return TrustedSitesBase::isTrusted(page);
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

bool SessionTrustedSites::reject(const SitePattern& page) const {
    const std::shared_lock lock(mutex_);
    return covers(refused_, page);
}

}  // namespace Corvane
