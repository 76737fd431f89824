// Which sites the user has let use the component, and which were turned away.
//
// Permissions that were to be remembered stand in the registry below trustedSitesKey, one value name per
// pattern; what was allowed once, or refused and remembered, is kept until the process ends.
#pragma once

#include "core/lock.h"
#include "sites/site_pattern.h"

#include <vector>

namespace Corvane {

inline constexpr wchar_t trustedSitesKey[] = L"SOFTWARE\\ZimVetrel\\VetrelCorvane\\TrustedSites";

// Parses an address or a pattern as the system sees its letters: lower-cased first, and any alphabet's
// letters may stand in a host name.
SitePattern readSite(const std::wstring& text);

// A list of trusted sites.
class TrustedSitesBase {
public:
    // Whether a pattern of the list covers the page of this address, as readSite() gives it; never for an
    // empty one.
    virtual bool isTrusted(const SitePattern& page) const;
    bool isTrusted(const std::wstring& address) const { return isTrusted(readSite(address)); }

    virtual ~TrustedSitesBase() = default;
    TrustedSitesBase(const TrustedSitesBase&) = delete;
    TrustedSitesBase& operator=(const TrustedSitesBase&) = delete;

protected:
    TrustedSitesBase() = default;

    std::vector<SitePattern> trusted_;
};

// What stands in the registry for a permission and is none.
struct InvalidSitePattern {
    std::wstring text;
    bool isOfUser = false;  // else of the machine
};

// The values of the permanent list that are passed over since they are no valid patterns, those of the user
// first. Any thread. Throws Win32Exception E_REG_KEY_CREATE where a list is there and cannot be read.
std::vector<InvalidSitePattern> invalidTrustedSites();

// The permanent list: the current user's values, then the machine's if those do not cover the page. Each test
// sees the registry as it is then, so that an edit counts from the next check on; an unchanged key is not
// read again. Values that are no valid pattern, and keys that cannot be read, are passed over silently. Any
// thread.
class RegTrustedSites : public TrustedSitesBase {
public:
    using TrustedSitesBase::isTrusted;
    bool isTrusted(const SitePattern& page) const override;
};

// The lists of this process, trusted and refused; they only grow. Any thread.
class SessionTrustedSites : public TrustedSitesBase {
public:
    // The one of the process, made at first use.
    static SessionTrustedSites& instance();

    using TrustedSitesBase::isTrusted;
    bool isTrusted(const SitePattern& page) const override;

    // Appends the site of `url` to the refused list (`banned`) or to the trusted one. Its scheme counts, its
    // port and path do not. Throws E_INVALID_DOMAIN when `url` makes no valid pattern.
    void add(const std::wstring& url, bool banned);

    // Writes the site of `url` to the current user's permanent list. Throws E_INVALID_DOMAIN as add() does;
    // Win32Exception E_REG_KEY_CREATE, E_REG_VALUE_SET.
    void addToRegistry(const std::wstring& url) const;

    // Whether a pattern of the refused list covers the page of this address.
    bool reject(const SitePattern& page) const;
    bool reject(const std::wstring& url) const { return reject(readSite(url)); }

private:
    mutable SharedMutex mutex_;
    std::vector<SitePattern> refused_;
};

}  // namespace Corvane
