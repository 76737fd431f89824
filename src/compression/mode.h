// How hard compression tries.
#pragma once

#include <zlib.h>

namespace Corvane::Compression {

// 0 is the fastest, 1 zlib's own choice, 2 the smallest.
inline constexpr int defaultMode = 1;

// zlib's level for a mode; any unknown mode is zlib's own choice.
constexpr int zlibLevel(int mode) noexcept {
    switch (mode) {
        case 0:
            return Z_BEST_SPEED;
        case 2:
            return Z_BEST_COMPRESSION;
        default:
            return Z_DEFAULT_COMPRESSION;
    }
}

}  // namespace Corvane::Compression
