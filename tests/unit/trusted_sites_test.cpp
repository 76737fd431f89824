#include "core/trusted_sites.h"

#include "scratch_registry.h"
#include "support.h"

#include <gtest/gtest.h>

#include <thread>

using namespace Corvane;
using namespace Corvane::Test;

namespace {

class TrustedSites : public testing::Test {
protected:
    static void addValue(HKEY hive, const std::wstring& name) {
        ScratchRegistry::addValue(hive, trustedSitesKey, name);
    }

    ScratchRegistry registry_;
};

TEST_F(TrustedSites, LettersAreTheSystems) {
    const SitePattern site = readSite(L"HTTPS://Почта.РФ/Ящик");
    EXPECT_EQ(site.scheme, L"https");
    EXPECT_EQ(siteHost(site), L"почта.рф");
    EXPECT_EQ(site.rest, L"ящик");
    EXPECT_EQ(readSite(L"http://a。b").rest, siteParseError) << "the ideographic stop is no letter";
}

TEST_F(TrustedSites, ValidPatternsOfBothHivesCount) {
    EXPECT_FALSE(RegTrustedSites().isTrusted(L"https://example.org/")) << "without a key";
    for (const wchar_t* name : {L"*.org", L"*", L"file://x", L"a.*.org", L"ex ample.org", L""})
        addValue(HKEY_CURRENT_USER, name);
    addValue(HKEY_CURRENT_USER, L"*.User.example");
    addValue(HKEY_LOCAL_MACHINE, L"name://wscript.exe");
    const RegTrustedSites sites;
    EXPECT_TRUE(sites.isTrusted(L"HTTPS://a.USER.example:8080/x"));
    EXPECT_TRUE(sites.isTrusted(L"name://WScript.exe"));
    for (const wchar_t* address : {L"https://other.example/", L"", L"http://www.example.org", L"http://org",
                                   L"file://x", L"http://a.b.org", L"file:///c:/x.html"})
        EXPECT_FALSE(sites.isTrusted(address)) << testing::PrintToString(address);
    // One name at the edge of the first buffer, one that needs it doubled several times; a short one after
    // them.
    for (const std::size_t length : {260u, 261u, 3000u, 5u}) {
        const std::wstring host = std::wstring(length - 4, L'a') + L".org";
        addValue(HKEY_CURRENT_USER, host);
        EXPECT_TRUE(RegTrustedSites().isTrusted(L"http://" + host)) << length;
    }
}

TEST_F(TrustedSites, SessionKeepsTrustedAndRefusedApart) {
    SessionTrustedSites sites;
    sites.add(L"https://Good.example:8080/path", false);
    sites.add(L"https://bad.example/path", true);
    EXPECT_TRUE(sites.isTrusted(L"https://good.example/"));
    EXPECT_TRUE(sites.reject(L"https://BAD.example:1/"));
    // Refused or trusted is not the other, the scheme counts, and so does each label.
    for (const wchar_t* address :
         {L"https://bad.example/", L"http://good.example/", L"https://www.good.example/", L""})
        EXPECT_FALSE(sites.isTrusted(address)) << testing::PrintToString(address);
    for (const wchar_t* address : {L"https://good.example/", L"http://bad.example/", L""})
        EXPECT_FALSE(sites.reject(address)) << testing::PrintToString(address);
    EXPECT_FALSE(RegTrustedSites().isTrusted(L"https://good.example/")) << "not remembered";
}

TEST_F(TrustedSites, RememberedSiteIsWrittenAsAPattern) {
    SessionTrustedSites().addToRegistry(L"HTTPS://Good.example:8080/path");
    EXPECT_EQ(::RegGetValueW(HKEY_CURRENT_USER, trustedSitesKey, L"https://good.example", RRF_RT_REG_DWORD,
                             nullptr, nullptr, nullptr),
              ERROR_SUCCESS);
    EXPECT_TRUE(RegTrustedSites().isTrusted(L"https://good.example/other"));
    EXPECT_FALSE(RegTrustedSites().isTrusted(L"http://good.example/"));
}

TEST_F(TrustedSites, InvalidSitesAreNotAdded) {
    SessionTrustedSites sites;
    for (const wchar_t* url : {L"", L"file:///c:/x.html", L"http://*.org", L"http://a b", L"http://a:b@c/"}) {
        EXPECT_EQ(errorCode([&] { sites.add(url, false); }), E_INVALID_DOMAIN.code);
        EXPECT_EQ(errorCode([&] { sites.addToRegistry(url); }), E_INVALID_DOMAIN.code);
    }
    RegistryKey key;
    EXPECT_EQ(::RegOpenKeyExW(HKEY_CURRENT_USER, trustedSitesKey, 0, KEY_READ, key.put()),
              ERROR_FILE_NOT_FOUND);
}

TEST_F(TrustedSites, RegistryFailuresAreReported) {
    const SessionTrustedSites sites;
    // The registry takes no name of a value longer than 16,383 characters.
    EXPECT_EQ(errorCode([&] { sites.addToRegistry(L"http://" + std::wstring(16400, L'a')); }),
              E_REG_VALUE_SET.code);
    // No key can be made below one that was deleted.
    RegistryKey gone;
    ASSERT_EQ(::RegCreateKeyW(HKEY_CURRENT_USER, L"gone", gone.put()), ERROR_SUCCESS);
    ASSERT_EQ(::RegDeleteKeyW(HKEY_CURRENT_USER, L"gone"), ERROR_SUCCESS);
    ASSERT_EQ(::RegOverridePredefKey(HKEY_CURRENT_USER, gone.get()), ERROR_SUCCESS);
    EXPECT_EQ(failureOf([&] { sites.addToRegistry(L"http://a.example"); }),
              Failure(E_REG_KEY_CREATE.code, ERROR_KEY_DELETED));
}

TEST_F(TrustedSites, SessionIsSharedByThreads) {
    SessionTrustedSites& sites = SessionTrustedSites::instance();
    const auto work = [&](const std::wstring& name) {
        for (int i = 0; i < 500; ++i) {
            const bool refused = i % 2 != 0;
            const std::wstring url = L"http://" + name + std::to_wstring(i) + L".example/";
            sites.add(url, refused);
            EXPECT_EQ(sites.isTrusted(url), !refused);
            EXPECT_EQ(sites.reject(url), refused);
        }
    };
    std::jthread first(work, L"a");
    work(L"b");
}

}  // namespace
