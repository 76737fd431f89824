// The message functions of CryptoAPI count in 32 bits.
#pragma once

#include "binary/bytes.h"
#include "core/exception.h"

#include <windows.h>

#include <limits>
#include <span>

namespace Corvane::detail {

// Throws Exception E_BINARY_MAX_SIZE for 4 GiB and more.
inline DWORD messageSize(std::span<const std::uint8_t> bytes) {
    if (bytes.size() > std::numeric_limits<DWORD>::max())
        throw Exception(E_BINARY_MAX_SIZE);
    return static_cast<DWORD>(bytes.size());
}

}  // namespace Corvane::detail
