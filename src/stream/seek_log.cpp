#include "stream/seek_log.h"

#include "core/log.h"

namespace Corvane::Stream {

void logSeek(const wchar_t* function, std::uint64_t from, std::uint64_t to) {
    writeLog(LogLevel::debug, function, L"old position: ", from, L", new position: ", to);
}

}  // namespace Corvane::Stream
