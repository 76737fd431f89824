#include "core/log_file.h"

#include "core/moment.h"
#include "core/settings.h"
#include "core/wide_text.h"

#include <array>
#include <mutex>

namespace Corvane {
namespace {

constexpr std::uint64_t ticksPerSecond = 10'000'000;
constexpr std::uint64_t settingLifetimeSeconds = 61;

// Several processes may share the log, so nobody is kept from writing, renaming or deleting it.
FileHandle openForAppending(const std::wstring& path, DWORD access, DWORD disposition, DWORD flags) noexcept {
    return FileHandle(::CreateFileW(path.c_str(), FILE_APPEND_DATA | SYNCHRONIZE | access,
                                    FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                                    disposition, flags, nullptr));
}

detail::LevelCache levelCache;

}  // namespace

bool isLogEnabled(LogLevel level) noexcept {
    return levelCache.isEnabled(level, currentTicks());
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

LogStamp currentLogStamp() noexcept {
    SYSTEMTIME now;
    ::GetSystemTime(&now);
    return {now.wYear,   now.wMonth,  now.wDay,          now.wHour,
            now.wMinute, now.wSecond, now.wMilliseconds, ::GetCurrentThreadId()};
}

std::wstring logPath() {
    if (auto configured = readTextSetting(L"LogPath"); configured && !configured->empty())
        return *configured;
    std::array<wchar_t, MAX_PATH + 1> folder{};
    const DWORD length = ::GetTempPathW(static_cast<DWORD>(folder.size()), folder.data());
    const bool known = length != 0 && length < folder.size();
    return std::wstring(folder.data(), known ? length : 0) + L"Corvane2.log";
}

LogState logState() {
    return {readNumberSetting(L"LogLevel").value_or(0), logPath()};
}

DWORD tryLogFile(const LogState& state) noexcept {
    // While the log is off nobody else can come to write into a file that goes away at once.
    FileHandle file = openForAppending(state.path, 0, state.level == 0 ? OPEN_EXISTING : OPEN_ALWAYS,
                                       FILE_ATTRIBUTE_NORMAL);
    if (!file && state.level == 0 && ::GetLastError() == ERROR_FILE_NOT_FOUND)
        file = openForAppending(state.path, DELETE, CREATE_NEW, FILE_FLAG_DELETE_ON_CLOSE);
    return file ? ERROR_SUCCESS : ::GetLastError();
}

ILogger& processLogger() {
    static FileLogger logger(logPath());
    return logger;
}

void FileLogger::write(std::wstring_view line) {
    const LastErrorKeeper keeper;
    const std::string encoded = toUtf8(line);
    const std::lock_guard guard(mutex_);
    if (!std::exchange(opened_, true)) {
        // The system appends each line in one step.
        file_ = openForAppending(path_, 0, OPEN_ALWAYS, FILE_ATTRIBUTE_NORMAL);
    }
    if (!file_)
        return;
    DWORD written = 0;
    ::SetFilePointerEx(file_.get(), LARGE_INTEGER{}, nullptr, FILE_END);
    ::WriteFile(file_.get(), encoded.data(), static_cast<DWORD>(encoded.size()), &written, nullptr);
}

}  // namespace detail
}  // namespace Corvane
