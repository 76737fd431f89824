// Where the log goes on Windows: a file, as far as the registry says.
#pragma once

#include "core/handles.h"
#include "core/lock.h"
#include "core/log.h"

#include <atomic>
#include <string>
#include <utility>

namespace Corvane::detail {

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

// The configured path of the log, or its default in the temporary folder.
std::wstring logPath();

// The settings of the log as they are now.
struct LogState {
    std::uint32_t level = 0;
    std::wstring path;
};

LogState logState();

// ERROR_SUCCESS where this process may append to the file, or make it where there is none; else the system's
// number. Leaves no file behind while the log is off.
DWORD tryLogFile(const LogState& state) noexcept;

// Appends lines to a file, opened at the first line. Lines of different threads never interleave.
class FileLogger : public ILogger {
public:
    explicit FileLogger(std::wstring path) : path_(std::move(path)) {}

    void write(std::wstring_view line) override;

private:
    SharedMutex mutex_;
    std::wstring path_;
    FileHandle file_;
    bool opened_ = false;
};

}  // namespace Corvane::detail
