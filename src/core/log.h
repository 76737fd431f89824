// The diagnostic log that support staff switch on through the registry ("LogLevel", "LogPath"). Every layer
// may write to it, those that know nothing of Windows included.
//
//     writeLog(LogLevel::debug, L"Corvane::Certificate::getValue", L"[in] type: ", type);
//
// One line is: UTC time | thread id | level | context | text. The function that does the work logs what it
// was given: numbers, names, paths, sizes and positions, never the content of a document. Secrets do not
// compile (core/secret.h). Builds for other systems than Windows write nothing.
#pragma once

#include <cstdint>
#include <sstream>
#include <string>
#include <string_view>

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

// The logger of the process.
ILogger& processLogger();

// When, in UTC, and on which thread a line was written.
struct LogStamp {
    unsigned year, month, day, hour, minute, second, milliseconds;
    std::uint32_t thread;
};

LogStamp currentLogStamp() noexcept;

// A line under construction: values are streamed into it and its destructor hands it to the logger.
class LogMessage {
public:
    LogMessage(std::uint32_t level, std::wstring_view context, ILogger& logger);
    ~LogMessage();
    LogMessage(const LogMessage&) = delete;
    LogMessage& operator=(const LogMessage&) = delete;

    template <class Value>
    LogMessage& operator<<(const Value& value) requires requires(std::wostream& out) {
        out << value;
    }
    {
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
std::wstring formatLogLine(const LogStamp& stamp, std::uint32_t level, std::wstring_view context,
                           std::wstring_view text);

}  // namespace detail

// Writes one line when the level is enabled, and builds no text otherwise.
template <class... Values>
void writeLog(LogLevel level, std::wstring_view context, const Values&... values) {
    if (!isLogEnabled(level))
        return;
    detail::LogMessage message(static_cast<std::uint32_t>(level), context, detail::processLogger());
    (message << ... << values);
}

}  // namespace Corvane
