// Numbers as zip archives hold them.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

namespace Corvane::Compression::detail {

// At most eight bytes, the least significant one first.
inline std::uint64_t littleEndian(std::span<const std::uint8_t> bytes) noexcept {
    std::uint64_t number = 0;
    for (std::size_t i = 0; i < bytes.size(); ++i)
        number |= std::uint64_t{bytes[i]} << 8 * i;
    return number;
}

}  // namespace Corvane::Compression::detail
