// Exceptions and their messages, handles, text, settings, the log, trusted sites.
#include "core/check.h"
#include "core/handles.h"
#include "core/log_file.h"
#include "core/secret.h"
#include "core/settings.h"
#include "core/wide_text.h"
#include "files/file_system.h"
#include "scratch_registry.h"
#include "sites/key_watch.h"
#include "sites/trusted_sites.h"
#include "soon.h"
#include "support.h"

#include <gmock/gmock.h>

#include <optional>
#include <regex>
#include <thread>

using namespace Corvane;
using namespace Corvane::Test;
using namespace Corvane::detail;

namespace {

TEST(Exception, FullMessageIsNumberTextAndDetails) {
    // FormatMessageW's own answer, asked for in another way than the code does, without its line end.
    wchar_t text[1024] = L"";
    const DWORD length = ::FormatMessageW(FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS, nullptr,
                                          ERROR_ACCESS_DENIED, 0, text, 1024, nullptr);
    EXPECT_EQ(fullMessage(Win32Exception(E_CREATE_FILE, ERROR_ACCESS_DENIED)),
              L"[28] Ошибка при открытии файла (0x5:" + std::wstring(text, length - 2) + L")");
    EXPECT_EQ(fullMessage(Win32Exception(E_CREATE_FILE, 0x2FFFFFFF)), L"[28] Ошибка при открытии файла")
        << "a number without a text";
}

// A family of calls that return a status of their own and know no descriptor, as modules of tokens do.
struct ModuleCalls {
    static bool succeeded(unsigned long status) noexcept { return status == 0; }
    [[noreturn]] static void fail(unsigned long status, const char* call) {
        throw std::runtime_error(call + std::to_string(status));
    }
};

TEST(TwoPass, GivesWhatTheSecondCallDelivered) {
    // Announces more than it delivers, as CryptSignMessage does.
    unsigned long status = 0;
    unsigned long announced = 5;
    const auto list = [&](int* buffer, unsigned long* size) {
        *size = buffer ? 2 : announced;
        if (buffer)
            std::fill_n(buffer, std::min(2ul, announced), 7);
        return buffer ? status : 0;
    };
    const auto run = [&] { return twoPass<ModuleCalls, int, unsigned long>(list, "C_GetSlotList "); };
    EXPECT_THAT(run(), testing::ElementsAre(7, 7));
    // What came in between, such as a token, has no room and is no row of zeros.
    announced = 1;
    EXPECT_THAT(run(), testing::ElementsAre(7));
    status = 5;
    EXPECT_THAT(run, testing::ThrowsMessage<std::runtime_error>("C_GetSlotList 5"));
}

TEST(Handle, KeepsTheLastErrorWhenItIsClosed) {
    FileHandle file(::CreateFileW(L"NUL", GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr));
    ASSERT_TRUE(::CloseHandle(file.get()));
    ::SetLastError(ERROR_DISK_FULL);
    file.reset();  // fails, for want of an open handle
    EXPECT_EQ(::GetLastError(), static_cast<DWORD>(ERROR_DISK_FULL));
}

void setNumber(HKEY hive, const wchar_t* name, DWORD value) {
    ASSERT_EQ(::RegSetKeyValueW(hive, settingsKey, name, REG_DWORD, &value, sizeof(value)), ERROR_SUCCESS);
}

TEST(Log, LevelIsReadAgainAfterAMinute) {
    constexpr std::uint64_t second = 10'000'000;
    const ScratchRegistry registry;
    LevelCache cache;
    const std::uint64_t start = 1'000 * second;
    EXPECT_FALSE(cache.isEnabled(LogLevel::error, start)) << "nothing is logged unless a level is set";
    setNumber(HKEY_CURRENT_USER, L"LogLevel", 2);
    EXPECT_FALSE(cache.isEnabled(LogLevel::error, start + 61 * second - 1)) << "still what was read first";
    EXPECT_TRUE(cache.isEnabled(LogLevel::warning, start + 61 * second));
    EXPECT_FALSE(cache.isEnabled(LogLevel::info, start + 61 * second));
}

TEST(Settings, TheUserComesBeforeTheMachine) {
    const ScratchRegistry registry;
    EXPECT_EQ(readNumberSetting(L"LogLevel"), std::nullopt);
    setNumber(HKEY_LOCAL_MACHINE, L"LogLevel", 1);
    EXPECT_EQ(readNumberSetting(L"LogLevel"), 1u);
    setNumber(HKEY_CURRENT_USER, L"LogLevel", 4);
    EXPECT_EQ(readNumberSetting(L"LogLevel"), 4u);
    EXPECT_EQ(readTextSetting(L"LogLevel"), std::nullopt) << "a number is not a text";
    const std::wstring path(3000, L'я');
    ScratchRegistry::addText(HKEY_LOCAL_MACHINE, settingsKey, L"LogPath", path);
    EXPECT_EQ(readTextSetting(L"LogPath"), path);
}

TEST(Log, LinesAreAppendedWhole) {
    const std::wstring path = FileSystem::temporaryFolder() + L"corvane-журнал";
    writeFile(path, Bytes{'x', '\n'});
    {
        FileLogger logger(path);
        std::vector<std::jthread> writers(4);
        for (std::jthread& writer : writers)
            writer = std::jthread([&] {
                for (int line = 0; line < 100; ++line)
                    LogMessage(3, L"c", logger) << L"value: " << 1000 << L'.';
            });
    }
    const Bytes content = readFile(path);
    FileSystem::deleteFile(path);
    const std::string text(content.begin(), content.end());
    const std::regex line(R"(\d{4}-[^|]*\| \d+ \| INFO \| c \| value: 1000\.\r\n)");
    EXPECT_EQ(std::regex_replace(text, line, "."), "x\n" + std::string(400, '.')) << "behind what was there";
    FileLogger nowhere(L"Z:\\no such folder\\Corvane2.log");
    EXPECT_NO_THROW(LogMessage(1, L"c", nowhere) << L"t");
}

// Memory that can still be looked at after it was given back.
std::array<char, 64> arena;
template <class T>
struct ArenaAllocator {
    using value_type = T;
    T* allocate(std::size_t count) {
        EXPECT_LE(count * sizeof(T), arena.size());
        return reinterpret_cast<T*>(arena.data());
    }
    void deallocate(T*, std::size_t) noexcept {}
    bool operator==(const ArenaAllocator&) const = default;
};

template <class Value>
concept Loggable = requires(LogMessage& message, const Value& value) {
    message << value;
};
static_assert(Loggable<std::wstring> && !Loggable<SecretText> && !Loggable<SecretNarrowText> &&
              !Loggable<SecretBytes> && !std::is_copy_constructible_v<SecretText>);

TEST(Secret, IsWipedWhenItIsLetGoOf) {
    using Pin = Secret<char, WipingAllocator<char, ArenaAllocator>>;
    const std::array<char, 64> clean{};
    { const Pin kept(std::string_view("12345678")); }
    EXPECT_EQ(arena, clean);
    Pin assigned(std::string_view("12345678"));
    EXPECT_STREQ(arena.data(), "12345678");
    assigned.resize(2);  // of which the rest stays in the memory
    Pin taken = std::move(assigned);
    EXPECT_EQ(std::string(taken.data(), taken.size()), "12");
    taken = Pin();
    EXPECT_EQ(arena, clean);
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

void addSite(HKEY hive, const std::wstring& name) {
    ScratchRegistry::addValue(hive, trustedSitesKey, name);
}

TEST_F(TrustedSites, LettersAreTheSystems) {
    const SitePattern site = readSite(L"HTTPS://Почта.РФ/Ящик");
    EXPECT_EQ(site.scheme, L"https");
    EXPECT_EQ(siteHost(site), L"почта.рф");
    EXPECT_EQ(site.rest, L"ящик");
    EXPECT_EQ(readSite(L"http://a。b").rest, siteParseError) << "the ideographic stop is no letter";
}

TEST_F(TrustedSites, ValidPatternsOfBothHivesCount) {
    EXPECT_FALSE(RegTrustedSites().isTrusted(L"https://example.org/")) << "without a key";
    for (const wchar_t* name : {L"*.org", L"file://x", L"", L"*.User.example"})
        addSite(HKEY_CURRENT_USER, name);
    addSite(HKEY_LOCAL_MACHINE, L"name://wscript.exe");
    const RegTrustedSites sites;
    EXPECT_TRUE(sites.isTrusted(L"HTTPS://a.USER.example:8080/x"));
    EXPECT_TRUE(sites.isTrusted(L"name://WScript.exe"));
    for (const wchar_t* address : {L"", L"http://www.example.org", L"file://x", L"file:///c:/x.html"})
        EXPECT_FALSE(sites.isTrusted(address)) << testing::PrintToString(address);
    // One name at the edge of the first buffer, one that needs it doubled several times; a short one after
    // them.
    for (const std::size_t length : {260u, 261u, 3000u, 5u}) {
        const std::wstring host = std::wstring(length - 4, L'a') + L".org";
        addSite(HKEY_CURRENT_USER, host);
        EXPECT_TRUE(RegTrustedSites().isTrusted(L"http://" + host)) << length;
    }
}

TEST_F(TrustedSites, AnEditOfTheRegistryCountsFromTheNextCheck) {
    KeyWatch watch(HKEY_CURRENT_USER, trustedSitesKey);
    const auto isTrusted = [] { return RegTrustedSites().isTrusted(L"http://a.example/"); };
    const auto add = [] { addSite(HKEY_CURRENT_USER, L"a.example"); };
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

TEST_F(TrustedSites, OnlyWholeSitesAreKept) {
    SessionTrustedSites sites;
    for (const wchar_t* url : {L"", L"file:///c:/x.html", L"http://*.org", L"http://a b", L"http://a:b@c/"}) {
        EXPECT_EQ(errorCode([&] { sites.add(url, false); }), E_INVALID_DOMAIN.code);
        EXPECT_EQ(errorCode([&] { sites.addToRegistry(url); }), E_INVALID_DOMAIN.code);
    }
    // The registry takes no name of a value longer than 16,383 characters.
    EXPECT_EQ(errorCode([&] { sites.addToRegistry(L"http://" + std::wstring(16400, L'a')); }),
              E_REG_VALUE_SET.code);
    sites.addToRegistry(L"HTTPS://Good.example:8080/path");
    EXPECT_EQ(::RegGetValueW(HKEY_CURRENT_USER, trustedSitesKey, L"https://good.example", RRF_RT_REG_DWORD,
                             nullptr, nullptr, nullptr),
              ERROR_SUCCESS);
    EXPECT_TRUE(RegTrustedSites().isTrusted(L"https://good.example/other"));
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
