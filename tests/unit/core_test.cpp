// Calls that are made twice, settings, the log, secrets, trusted sites.
#include "core/log_file.h"
#include "core/secret.h"
#include "core/settings.h"
#include "core/two_pass.h"
#include "files/file_system.h"
#include "scratch_registry.h"
#include "sites/key_watch.h"
#include "sites/trusted_sites.h"
#include "soon.h"
#include "support.h"

#include <optional>
#include <regex>
#include <thread>

using namespace Corvane;
using namespace Corvane::Test;
using namespace Corvane::detail;

namespace {

TEST(TwoPass, GivesWhatTheSecondCallDelivered) {
    // More is announced than delivered, as by CryptSignMessage, or what came in between has no room.
    for (const DWORD announced : {5u, 1u}) {
        const auto bytes = twoPass<BYTE>(E_CRYPTO_SIGN, L"a call", [&](BYTE* buffer, DWORD* size) {
            *size = buffer ? 2 : announced;
            if (buffer)
                *buffer = 7;
            return TRUE;
        });
        EXPECT_EQ(bytes.size(), std::min<DWORD>(announced, 2));
        EXPECT_EQ(bytes.front(), 7);
    }
}

TEST(Log, LevelIsReadAgainAfterAMinute) {
    constexpr std::uint64_t second = 10'000'000;
    const ScratchRegistry registry;
    LevelCache cache;
    const std::uint64_t start = 1'000 * second;
    EXPECT_FALSE(cache.isEnabled(LogLevel::error, start)) << "nothing is logged unless a level is set";
    ScratchRegistry::add(HKEY_CURRENT_USER, settingsKey, L"LogLevel", 2u);
    EXPECT_FALSE(cache.isEnabled(LogLevel::error, start + 61 * second - 1)) << "still what was read first";
    EXPECT_TRUE(cache.isEnabled(LogLevel::warning, start + 61 * second));
    EXPECT_FALSE(cache.isEnabled(LogLevel::info, start + 61 * second));
}

TEST(Settings, TheUserComesBeforeTheMachine) {
    const ScratchRegistry registry;
    EXPECT_EQ(readNumberSetting(L"LogLevel"), std::nullopt);
    ScratchRegistry::add(HKEY_LOCAL_MACHINE, settingsKey, L"LogLevel", 1u);
    EXPECT_EQ(readNumberSetting(L"LogLevel"), 1u);
    ScratchRegistry::add(HKEY_CURRENT_USER, settingsKey, L"LogLevel", 4u);
    EXPECT_EQ(readNumberSetting(L"LogLevel"), 4u);
    EXPECT_EQ(readTextSetting(L"LogLevel"), std::nullopt) << "a number is not a text";
    const std::wstring path(3000, L'я');
    ScratchRegistry::add(HKEY_LOCAL_MACHINE, settingsKey, L"LogPath", path);
    EXPECT_EQ(readTextSetting(L"LogPath"), path);
}

TEST(Log, LinesAreAppended) {
    const std::wstring path = FileSystem::createTemporaryFile(true)->path();
    for (int times = 0; times < 2; ++times) {
        FileLogger logger(path);
        LogMessage(3, L"c", logger) << L"value: " << 1000 << L'.';
    }
    const Bytes content = readFile(path);
    FileSystem::deleteFile(path);
    const std::regex lines(R"((\d{4}-[^|]*\| \d+ \| INFO \| c \| value: 1000\.\r\n){2})");
    EXPECT_TRUE(std::regex_match(std::string(content.begin(), content.end()), lines));
}

std::string givenBack;
template <class T>
struct TellingAllocator : std::allocator<T> {
    void deallocate(T* memory, std::size_t count) {
        givenBack.assign(memory, count);
        std::allocator<T>::deallocate(memory, count);
    }
};

template <class Value>
concept Loggable = requires(LogMessage& message, const Value& value) {
    message << value;
};
static_assert(Loggable<std::wstring> && !Loggable<SecretText> && !Loggable<SecretNarrowText> &&
              !Loggable<SecretBytes> && !std::is_copy_constructible_v<SecretText>);

TEST(Secret, IsWipedWhenItIsLetGoOf) {
    using Pin = Secret<char, WipingAllocator<char, TellingAllocator>>;
    Pin pin(std::string_view("12345678"));
    pin.resize(2);  // of which the rest stays in the memory
    Pin taken = std::move(pin);
    EXPECT_EQ(std::string(taken.data(), taken.size()), "12");
    EXPECT_EQ(givenBack, "");
    taken = Pin();
    EXPECT_EQ(givenBack, std::string(8, '\0'));
}

class TrustedSites : public testing::Test {
protected:
    // What an earlier test opened of the real lists would be taken for unchanged for some seconds.
    TrustedSites() {
        for (HKEY hive : {HKEY_CURRENT_USER, HKEY_LOCAL_MACHINE}) {
            RegistryKey key;
            if (::RegOpenKeyExW(hive, trustedSitesKey, 0, KEY_WRITE, key.put()) == ERROR_SUCCESS) {
                ::RegSetValueExW(key.get(), L"touched", 0, REG_SZ, nullptr, 0);
                ::RegDeleteValueW(key.get(), L"touched");
            }
        }
        registry_.emplace();
    }

private:
    std::optional<ScratchRegistry> registry_;
};

TEST_F(TrustedSites, ValidPatternsOfBothHivesCount) {
    EXPECT_FALSE(RegTrustedSites().isTrusted(L"https://example.org/")) << "without a key";
    for (const wchar_t* name : {L"*.org", L"file://x", L"", L"*.User.example", L"*.Почта.рф"})
        ScratchRegistry::add(HKEY_CURRENT_USER, trustedSitesKey, name);
    ScratchRegistry::add(HKEY_LOCAL_MACHINE, trustedSitesKey, L"name://wscript.exe");
    const RegTrustedSites sites;
    EXPECT_TRUE(sites.isTrusted(L"HTTPS://a.USER.example:8080/x"));
    EXPECT_TRUE(sites.isTrusted(L"https://a.ПОЧТА.РФ/Ящик"));
    EXPECT_EQ(readSite(L"http://a。b").rest, siteParseError) << "the ideographic stop is no letter";
    EXPECT_TRUE(sites.isTrusted(L"name://WScript.exe"));
    for (const wchar_t* address : {L"", L"http://www.example.org", L"file://x", L"file:///c:/x.html"})
        EXPECT_FALSE(sites.isTrusted(address)) << testing::PrintToString(address);
    // One name at the edge of the first buffer, one that needs it doubled several times; a short one after
    // them.
    for (const std::size_t length : {260u, 261u, 3000u, 5u}) {
        const std::wstring host = std::wstring(length - 4, L'a') + L".org";
        ScratchRegistry::add(HKEY_CURRENT_USER, trustedSitesKey, host);
        EXPECT_TRUE(RegTrustedSites().isTrusted(L"http://" + host)) << length;
    }
}

TEST_F(TrustedSites, AnEditOfTheRegistryCountsFromTheNextCheck) {
    KeyWatch watch(HKEY_CURRENT_USER, trustedSitesKey);
    const auto isTrusted = [] { return RegTrustedSites().isTrusted(L"http://a.example/"); };
    const auto add = [] { ScratchRegistry::add(HKEY_CURRENT_USER, trustedSitesKey, L"a.example"); };
    const auto remove = [] {
        EXPECT_EQ(::RegDeleteKeyValueW(HKEY_CURRENT_USER, trustedSitesKey, L"a.example"), ERROR_SUCCESS);
    };
    // Many within one step of the clock, then after rests, in which the key's date becomes certain.
    for (int i = 0; i < 100; ++i) {
        add();
        EXPECT_TRUE(watch.changed()) << "a change as young as this";
        EXPECT_TRUE(isTrusted());
        remove();
        EXPECT_FALSE(isTrusted());
    }
    // At last as if the key had been renamed: what was opened lives on.
    RegistryKey other;
    ASSERT_EQ(::RegCreateKeyW(HKEY_CURRENT_USER, L"other", other.put()), ERROR_SUCCESS);
    const std::function<void()> ends[] = {remove, [] { ::RegDeleteKeyW(HKEY_CURRENT_USER, trustedSitesKey); },
                                          [&] { ::RegOverridePredefKey(HKEY_CURRENT_USER, other.get()); }};
    for (const auto& end : ends) {
        add();
        EXPECT_TRUE(soon([&] { return isTrusted() && !watch.changed(); }));
        end();
        EXPECT_TRUE(&end == &ends[2] ? soon([&] { return !isTrusted(); }) : !isTrusted());
    }
}

TEST_F(TrustedSites, SessionIsSharedByThreads) {
    const auto work = [](const std::wstring& name) {
        for (int i = 0; i < 500; ++i) {
            const std::wstring url = L"http://" + name + std::to_wstring(i) + L".example/";
            SessionTrustedSites::instance().add(url, i % 2 != 0);
            EXPECT_NE(SessionTrustedSites::instance().isTrusted(url), i % 2 != 0);
        }
    };
    std::jthread first(work, L"a");
    work(L"b");
}

}  // namespace
