#include "core/trusted_sites.h"

#include "core/system_exception.h"
#include "scratch_registry.h"

#include <gtest/gtest.h>

#include <atomic>
#include <optional>
#include <thread>

using namespace Corvane;

namespace {

class TrustedSites : public testing::Test {
protected:
    static void addValue(HKEY hive, const std::wstring& name) {
        ScratchRegistry::addValue(hive, trustedSitesKey, name);
    }

    ScratchRegistry registry_;
};

// The code of the Corvane::Exception that `action` throws; 0 when it throws none.
template <class Action>
std::uint32_t codeOf(Action action) {
    try {
        action();
    } catch (const Exception& exception) {
        return exception.code();
    }
    return 0;
}

}  // namespace

TEST_F(TrustedSites, LettersAreTheSystems) {
    const SitePattern site = readSite(L"HTTPS://Почта.РФ/Ящик");
    EXPECT_EQ(site.scheme, L"https");
    EXPECT_EQ(siteHost(site), L"почта.рф");
    EXPECT_EQ(site.rest, L"ящик");
    EXPECT_EQ(readSite(L"http://a。b").rest, siteParseError) << "the ideographic stop is no letter";
}

TEST_F(TrustedSites, NoKeyMeansNobodyIsTrusted) {
    EXPECT_FALSE(RegTrustedSites().isTrusted(L"https://example.org/"));
}

TEST_F(TrustedSites, BothHivesAreRead) {
    addValue(HKEY_CURRENT_USER, L"*.User.example");
    addValue(HKEY_LOCAL_MACHINE, L"name://wscript.exe");
    const RegTrustedSites sites;
    EXPECT_TRUE(sites.isTrusted(L"HTTPS://a.USER.example:8080/x"));
    EXPECT_TRUE(sites.isTrusted(L"name://WScript.exe"));
    EXPECT_FALSE(sites.isTrusted(L"https://machine.example/"));
    EXPECT_FALSE(sites.isTrusted(L""));

    addValue(HKEY_CURRENT_USER, L"https://machine.example");
    EXPECT_TRUE(RegTrustedSites().isTrusted(L"https://machine.example/")) << "edits count at once";
}

TEST_F(TrustedSites, InvalidValuesArePassedOver) {
    for (const wchar_t* name : {L"*.org", L"*", L"file://x", L"a.*.org", L"ex ample.org", L""}) {
        addValue(HKEY_CURRENT_USER, name);
    }
    addValue(HKEY_CURRENT_USER, L"good.example");
    const RegTrustedSites sites;
    for (const wchar_t* address :
         {L"http://www.example.org", L"http://org", L"file://x", L"http://a.b.org", L"file:///c:/x.html"}) {
        EXPECT_FALSE(sites.isTrusted(address)) << testing::PrintToString(address);
    }
    EXPECT_TRUE(sites.isTrusted(L"http://good.example"));
}

TEST_F(TrustedSites, LongNamesAreReadWhole) {
    // One at the edge of the first buffer, one that needs it doubled several times; a short one after them.
    for (const std::size_t length : {260u, 261u, 3000u}) {
        const std::wstring host = std::wstring(length - 4, L'a') + L".org";
        addValue(HKEY_CURRENT_USER, host);
        EXPECT_TRUE(RegTrustedSites().isTrusted(L"http://" + host)) << length;
    }
    addValue(HKEY_CURRENT_USER, L"z.org");
    EXPECT_TRUE(RegTrustedSites().isTrusted(L"http://z.org"));
}

TEST_F(TrustedSites, SessionKeepsTrustedAndRefusedApart) {
    SessionTrustedSites sites;
    sites.add(L"https://Good.example:8080/path", false);
    sites.add(L"https://bad.example/path", true);
    const struct {
        const wchar_t* address;
        bool isTrusted;
        bool isRefused;
    } rows[] = {
        {L"https://good.example/", true, false},
        {L"http://good.example/", false, false},  // the scheme counts
        {L"https://www.good.example/", false, false},
        {L"https://BAD.example:1/", false, true},
        {L"http://bad.example/", false, false},
        {L"", false, false},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(sites.isTrusted(row.address), row.isTrusted) << testing::PrintToString(row.address);
        EXPECT_EQ(sites.reject(row.address), row.isRefused) << testing::PrintToString(row.address);
    }
    EXPECT_FALSE(RegTrustedSites().isTrusted(L"https://good.example/")) << "not remembered";
}

TEST_F(TrustedSites, RememberedSiteIsWrittenAsAPattern) {
    SessionTrustedSites().addToRegistry(L"HTTPS://Good.example:8080/path");

    RegistryKey key;
    ASSERT_EQ(::RegOpenKeyExW(HKEY_CURRENT_USER, trustedSitesKey, 0, KEY_READ, key.put()), ERROR_SUCCESS);
    DWORD type = 0;
    EXPECT_EQ(::RegQueryValueExW(key.get(), L"https://good.example", nullptr, &type, nullptr, nullptr),
              ERROR_SUCCESS);
    EXPECT_EQ(type, DWORD{REG_DWORD});
    EXPECT_TRUE(RegTrustedSites().isTrusted(L"https://good.example/other"));
    EXPECT_FALSE(RegTrustedSites().isTrusted(L"http://good.example/"));
}

TEST_F(TrustedSites, InvalidSitesAreNotAdded) {
    SessionTrustedSites sites;
    for (const wchar_t* url : {L"", L"file:///c:/x.html", L"http://*.org", L"http://a b", L"http://a:b@c/"}) {
        EXPECT_EQ(codeOf([&] { sites.add(url, false); }), E_INVALID_DOMAIN.code);
        EXPECT_EQ(codeOf([&] { sites.add(url, true); }), E_INVALID_DOMAIN.code);
        EXPECT_EQ(codeOf([&] { sites.addToRegistry(url); }), E_INVALID_DOMAIN.code);
    }
    RegistryKey key;
    EXPECT_EQ(::RegOpenKeyExW(HKEY_CURRENT_USER, trustedSitesKey, 0, KEY_READ, key.put()),
              ERROR_FILE_NOT_FOUND);
}

TEST_F(TrustedSites, RegistryFailuresAreReported) {
    const SessionTrustedSites sites;
    // The registry takes no name of a value longer than 16,383 characters.
    EXPECT_EQ(codeOf([&] { sites.addToRegistry(L"http://" + std::wstring(16400, L'a')); }),
              E_REG_VALUE_SET.code);

    // No key can be made below one that was deleted.
    RegistryKey gone;
    ASSERT_EQ(::RegCreateKeyExW(HKEY_CURRENT_USER, L"gone", 0, nullptr, 0, KEY_ALL_ACCESS, nullptr,
                                gone.put(), nullptr),
              ERROR_SUCCESS);
    ASSERT_EQ(::RegDeleteKeyW(HKEY_CURRENT_USER, L"gone"), ERROR_SUCCESS);
    ASSERT_EQ(::RegOverridePredefKey(HKEY_CURRENT_USER, gone.get()), ERROR_SUCCESS);
    try {
        sites.addToRegistry(L"http://a.example");
        ADD_FAILURE() << "nothing thrown";
    } catch (const Win32Exception& exception) {
        EXPECT_EQ(exception.code(), E_REG_KEY_CREATE.code);
        EXPECT_EQ(exception.error(), DWORD{ERROR_KEY_DELETED});
    }
}

TEST_F(TrustedSites, SessionIsSharedByThreads) {
    SessionTrustedSites& sites = SessionTrustedSites::instance();
    constexpr int count = 500;
    std::atomic<int> failures = 0;
    const auto work = [&](const std::wstring& name) {
        for (int i = 0; i < count; ++i) {
            const std::wstring url = L"http://" + name + std::to_wstring(i) + L".example/";
            sites.add(url, i % 2 != 0);
            failures += sites.isTrusted(url) == (i % 2 != 0) || sites.reject(url) != (i % 2 != 0);
        }
    };
    std::thread first(work, L"a");
    std::thread second(work, L"b");
    first.join();
    second.join();
    EXPECT_EQ(failures, 0);
    EXPECT_TRUE(sites.isTrusted(L"http://a0.example/") && sites.isTrusted(L"http://b0.example/"));
}
