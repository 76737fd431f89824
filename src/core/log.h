// The diagnostic log that support staff switch on through the registry ("LogLevel", "LogPath").
//
//     writeLog(LogLevel::debug, L"Corvane::Certificate::getValue", L"[in] type: ", type);
//
// One line is: UTC time | thread id | level | context | text. Secrets are never passed to it.
#pragma once

#include "core/handles.h"
#include "core/lock.h"

#include <atomic>
#include <cstdint>
#include <sstream>
#include <string>
#include <string_view>
#include <utility>

namespace Corvane {

enum class LogLevel : std::uint32_t {
    error = 1,
    warning = 2,
    info = 3,
    debug = 4,
};

// Whether lines of this level are written now. The setting is read again when it is more than
// 60 seconds old, so a change takes effect within about a minute. Any thread; never throws.
bool isLogEnabled(LogLevel level) noexcept;

namespace detail {

class ILogger {
public:
    virtual ~ILogger() = default;

    // Writes one finished line. Failure to write is not reported.
    virtual void write(std::wstring_view line) = 0;
};

// The configured level, read again when what it knows is more than 60 seconds old. Plain counters without a
// lock: threads that race read the registry twice and agree.
class LevelCache {
public:
    // `now` is the system time in units of 100 ns.
    bool isEnabled(LogLevel level, std::uint64_t now) noexcept;

private:
    std::atomic<std::uint32_t> level_{0};
    std::atomic<std::uint64_t> readAt_{0};
};

// Appends lines to a file, opened at the first line. Lines of different threads never interleave.
class FileLogger : public ILogger {
public:
    explicit FileLogger(std::wstring path) : path_(std::move(path)) {}

    // The one of the process, over the configured file.
    static FileLogger& instance();

    void write(std::wstring_view line) override;

private:
    SharedMutex mutex_;
    std::wstring path_;
    FileHandle file_;
    bool opened_ = false;
};

// A line under construction: values are streamed into it and its destructor hands it to the logger.
class LogMessage {
public:
    LogMessage(std::uint32_t level, std::wstring_view context, ILogger& logger);
    ~LogMessage();
    LogMessage(const LogMessage&) = delete;
    LogMessage& operator=(const LogMessage&) = delete;

    template <class Value>
    LogMessage& operator<<(const Value& value) {
        text_ << value;
        return *this;
    }

private:
    std::uint32_t level_;
    std::wstring_view context_;
    ILogger& logger_;
    std::wostringstream text_;
};

// The line of the log's format for a given moment; without the line end.
std::wstring formatLogLine(const SYSTEMTIME& time, DWORD thread, std::uint32_t level,
                           std::wstring_view context, std::wstring_view text);

}  // namespace detail

// Writes one line when the level is enabled, and builds no text otherwise.
template <class... Values>
void writeLog(LogLevel level, std::wstring_view context, const Values&... values) {
    if (!isLogEnabled(level))
        return;
    detail::LogMessage message(static_cast<std::uint32_t>(level), context, detail::FileLogger::instance());
    (message << ... << values);
}

}  // namespace Corvane
