#include "core/log.h"

#include "core/handles.h"
#include "core/lock.h"
#include "core/settings.h"
#include "core/text.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <iomanip>
#include <mutex>

namespace Corvane {
namespace {

constexpr std::uint64_t ticksPerSecond = 10'000'000;
constexpr std::uint64_t settingLifetimeSeconds = 61;

detail::LevelCache levelCache;

std::uint64_t systemTicks() noexcept {
    FILETIME now;
    ::GetSystemTimeAsFileTime(&now);
    return (static_cast<std::uint64_t>(now.dwHighDateTime) << 32) | now.dwLowDateTime;
}

std::wstring logPath() {
    if (auto configured = readTextSetting(L"LogPath"); configured && !configured->empty())
        return *configured;
    std::array<wchar_t, MAX_PATH + 1> folder{};
    const DWORD length = ::GetTempPathW(static_cast<DWORD>(folder.size()), folder.data());
    const bool known = length != 0 && length < folder.size();
    return std::wstring(folder.data(), known ? length : 0) + L"Corvane2.log";
}

}  // namespace

bool isLogEnabled(LogLevel level) noexcept {
    return levelCache.isEnabled(level, systemTicks());
}

namespace detail {

bool LevelCache::isEnabled(LogLevel level, std::uint64_t now) noexcept {
    const std::uint64_t readAt = readAt_.load(std::memory_order_relaxed);
    if (readAt == 0 || (now - readAt) / ticksPerSecond >= settingLifetimeSeconds) {
        try {
            level_.store(readNumberSetting(L"LogLevel").value_or(0), std::memory_order_relaxed);
        } catch (...) {
            level_.store(0, std::memory_order_relaxed);
        }
        readAt_.store(now, std::memory_order_relaxed);
    }
    return level_.load(std::memory_order_relaxed) >= static_cast<std::uint32_t>(level);
}

FileLogger& FileLogger::instance() {
    static FileLogger logger(logPath());
    return logger;
}

void FileLogger::write(std::wstring_view line) {
    const LastErrorKeeper keeper;
    const std::string encoded = toUtf8(line);
    const std::lock_guard guard(mutex_);
    if (!std::exchange(opened_, true)) {
        // Several processes may share the log, so nobody is kept from writing, renaming or deleting it, and
        // the system appends each line in one step.
        file_.attach(::CreateFileW(path_.c_str(), FILE_APPEND_DATA | SYNCHRONIZE,
                                   FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                                   OPEN_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr));
    }
    if (!file_)
        return;
    DWORD written = 0;
    ::SetFilePointerEx(file_.get(), LARGE_INTEGER{}, nullptr, FILE_END);
    ::WriteFile(file_.get(), encoded.data(), static_cast<DWORD>(encoded.size()), &written, nullptr);
}

namespace {

// A text from outside must not end the line and begin one of its own.
std::wstring oneLine(std::wstring_view text) {
    std::wstring line(text);
    const auto isControl = [](wchar_t c) { return c < L' '; };
    std::ranges::replace_if(line, isControl, L' ');
    return line;
}

}  // namespace

std::wstring formatLogLine(const SYSTEMTIME& time, DWORD thread, std::uint32_t level,
                           std::wstring_view context, std::wstring_view text) {
    constexpr std::array<const wchar_t*, 6> names = {L"", L"ERROR", L"WARN", L"INFO", L"DEBUG", L""};
    const auto two = [](WORD value) { return (value < 10 ? L"0" : L"") + std::to_wstring(value); };
    std::wostringstream line;
    line.imbue(std::locale::classic());
    line << time.wYear << L'-' << two(time.wMonth) << L'-' << two(time.wDay) << L'T' << two(time.wHour)
         << L':' << two(time.wMinute) << L':' << two(time.wSecond) << L'.' << time.wMilliseconds << L" | "
         << thread << L" | " << names[level < names.size() ? level : names.size() - 1] << L" | " << context;
    if (!text.empty())
        line << L" | " << oneLine(text);
    return std::move(line).str();
}

LogMessage::LogMessage(std::uint32_t level, std::wstring_view context, ILogger& logger)
    : level_(level), context_(context), logger_(logger) {
    text_.imbue(std::locale::classic());
}

LogMessage::~LogMessage() {
    try {
        SYSTEMTIME now;
        ::GetSystemTime(&now);
        logger_.write(formatLogLine(now, ::GetCurrentThreadId(), level_, context_, std::move(text_).str()) +
                      L"\r\n");
    } catch (...) {
        // A line that cannot be written is lost; the work it tells of goes on.
    }
}

}  // namespace detail
}  // namespace Corvane
