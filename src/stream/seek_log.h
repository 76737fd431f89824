// The trace of moved positions in the log, which the native build has not.
#pragma once

#include <cstdint>

#ifdef _WIN32
#include "core/log.h"
#endif

namespace Corvane::Stream {

// `function` is what is about to move the position.
inline void logSeek([[maybe_unused]] const wchar_t* function, [[maybe_unused]] std::uint64_t from,
                    [[maybe_unused]] std::uint64_t to) {
#ifdef _WIN32
    writeLog(LogLevel::debug, function, L"old position: ", from, L", new position: ", to);
#endif
}

}  // namespace Corvane::Stream
