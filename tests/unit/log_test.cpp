#include "core/log.h"

#include "core/settings.h"
#include "core/text.h"
#include "scratch_registry.h"
#include "stream/file_system.h"

#include <gmock/gmock.h>

#include <thread>

using namespace Corvane;
using detail::FileLogger;
using detail::formatLogLine;
using detail::LevelCache;
using detail::LogMessage;

namespace {

void setNumber(HKEY hive, const wchar_t* name, DWORD value) {
    ASSERT_EQ(::RegSetKeyValueW(hive, settingsKey, name, REG_DWORD, &value, sizeof(value)), ERROR_SUCCESS);
}

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
    ::RegSetKeyValueW(HKEY_LOCAL_MACHINE, settingsKey, L"LogPath", REG_SZ, path.c_str(),
                      static_cast<DWORD>((path.size() + 1) * sizeof(wchar_t)));
    EXPECT_EQ(readTextSetting(L"LogPath"), path);
}

TEST(Log, LinesAreAppendedWholeInUtf8) {
    const std::wstring path = FileSystem::temporaryFolder() + L"corvane-журнал";
    writeFile(path, Bytes{'x', '\n'});
    {
        FileLogger logger(path);
        std::vector<std::jthread> writers;
        for (int writer = 0; writer < 4; ++writer)
            writers.emplace_back([&] {
                for (int line = 0; line < 100; ++line)
                    LogMessage(3, L"контекст", logger) << L"value: " << 1000 << L'.';
            });
    }
    const Bytes content = readFile(path);
    FileSystem::deleteFile(path);
    std::istringstream lines(std::string(content.begin(), content.end()));
    std::string line;
    std::getline(lines, line);
    EXPECT_EQ(line, "x") << "what was there";
    int count = 0;
    for (; std::getline(lines, line); ++count)
        EXPECT_THAT(line, testing::EndsWith(toUtf8(L" | INFO | контекст | value: 1000.\r")));
    EXPECT_EQ(count, 400);
}

TEST(Log, AFileThatCannotBeOpenedIsNoError) {
    FileLogger logger(L"Z:\\no such folder\\Corvane2.log");
    EXPECT_NO_THROW(LogMessage(1, L"c", logger) << L"t");
}

}  // namespace
