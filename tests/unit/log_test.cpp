#include "core/log.h"

#include "core/settings.h"
#include "core/text.h"
#include "scratch_registry.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <thread>
#include <vector>

using namespace Corvane;
using detail::FileLogger;
using detail::formatLogLine;
using detail::LevelCache;
using detail::LogMessage;

namespace {

constexpr std::uint64_t second = 10'000'000;

void setNumber(HKEY hive, const wchar_t* name, DWORD value) {
    ASSERT_EQ(::RegSetKeyValueW(hive, settingsKey, name, REG_DWORD, &value, sizeof(value)), ERROR_SUCCESS);
}

std::string contentOf(const std::filesystem::path& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

class TemporaryLog {
public:
    TemporaryLog()
        : path_(std::filesystem::temp_directory_path() /
                (L"corvane-журнал-" + std::to_wstring(::GetTickCount64()))) {}
    ~TemporaryLog() { std::filesystem::remove(path_); }
    TemporaryLog(const TemporaryLog&) = delete;
    TemporaryLog& operator=(const TemporaryLog&) = delete;

    const std::filesystem::path& path() const { return path_; }

private:
    std::filesystem::path path_;
};

TEST(Log, LineLayout) {
    const SYSTEMTIME morning{2019, 10, 4, 24, 9, 5, 3, 7};
    EXPECT_EQ(formatLogLine(morning, 4242, 1, L"CBinaryObject::ToBase64", L"[11] x"),
              L"2019-10-24T09:05:03.7 | 4242 | ERROR | CBinaryObject::ToBase64 | [11] x");
    const SYSTEMTIME evening{2026, 1, 0, 2, 23, 59, 0, 120};
    const std::pair<std::uint32_t, const wchar_t*> levels[] = {
        {0, L""}, {1, L"ERROR"}, {2, L"WARN"}, {3, L"INFO"}, {4, L"DEBUG"}, {5, L""}, {4000, L""}};
    for (const auto& [level, name] : levels)
        EXPECT_EQ(formatLogLine(evening, 1, level, L"c", L"t"),
                  L"2026-01-02T23:59:00.120 | 1 | " + std::wstring(name) + L" | c | t");
}

TEST(Log, LevelIsReadAgainAfterAMinute) {
    const ScratchRegistry registry;
    LevelCache cache;
    const std::uint64_t start = 1'000 * second;
    EXPECT_FALSE(cache.isEnabled(LogLevel::error, start)) << "nothing is logged unless a level is set";
    setNumber(HKEY_CURRENT_USER, L"LogLevel", 2);
    EXPECT_FALSE(cache.isEnabled(LogLevel::error, start + 60 * second)) << "still what was read first";
    EXPECT_TRUE(cache.isEnabled(LogLevel::error, start + 61 * second));
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
    ::RegSetKeyValueW(HKEY_LOCAL_MACHINE, settingsKey, L"LogPath", REG_SZ, path.c_str(),
                      static_cast<DWORD>((path.size() + 1) * sizeof(wchar_t)));
    EXPECT_EQ(readTextSetting(L"LogPath"), path);
}

TEST(Log, LinesAreAppendedWholeInUtf8) {
    const TemporaryLog log;
    std::ofstream(log.path(), std::ios::binary) << "before\r\n";
    {
        FileLogger logger(log.path().wstring());
        std::vector<std::thread> writers;
        writers.reserve(4);
        for (int writer = 0; writer < 4; ++writer)
            writers.emplace_back([&] {
                for (int line = 0; line < 100; ++line)
                    LogMessage(3, L"контекст", logger) << L"value: " << 1000 << L'.';
            });
        for (std::thread& writer : writers)
            writer.join();
    }
    const std::string content = contentOf(log.path());
    EXPECT_TRUE(content.starts_with("before\r\n"));
    const std::string tail = toUtf8(L" | INFO | контекст | value: 1000.\r\n");
    std::size_t lines = 0;
    for (std::size_t at = content.find(tail); at != std::string::npos; at = content.find(tail, at + 1))
        ++lines;
    EXPECT_EQ(lines, 400u);
}

TEST(Log, AFileThatCannotBeOpenedIsNoError) {
    FileLogger logger(L"Z:\\no such folder\\Corvane2.log");
    EXPECT_NO_THROW(LogMessage(1, L"c", logger) << L"t");
}

TEST(Text, CodePages) {
    const std::wstring_view russian = L"Привет\0мир";
    const std::wstring text(russian.data(), 10);
    EXPECT_EQ(wideToMulti(1251, text), std::string("\xCF\xF0\xE8\xE2\xE5\xF2\0\xEC\xE8\xF0", 10));
    EXPECT_EQ(multiToWide(1251, std::string("\xCF\xF0\xE8\xE2\xE5\xF2\0\xEC\xE8\xF0", 10)), text);
    EXPECT_EQ(toUtf8(L"\xD83D\xDE00"), "\xF0\x9F\x98\x80");
    EXPECT_EQ(multiToWide(99999, std::string_view()), L"") << "an empty text does not reach the system";
    EXPECT_THROW(multiToWide(99999, "a"), std::exception);
    EXPECT_THROW(multiToWide(1251, static_cast<const char*>(nullptr)), std::invalid_argument);
}

}  // namespace
