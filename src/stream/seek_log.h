// The trace of moved positions in the log, which only the builds for Windows have.
#pragma once

#include <cstdint>

namespace Corvane::Stream {

// `function` is about to move the position.
#ifdef _WIN32
void logSeek(const wchar_t* function, std::uint64_t from, std::uint64_t to);
#else
inline void logSeek(const wchar_t*, std::uint64_t, std::uint64_t) noexcept {}
#endif

}  // namespace Corvane::Stream
