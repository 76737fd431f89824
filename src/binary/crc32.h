// The CRC-32 of ISO 3309 and ITU-T V.42, as in gzip and zip.
#pragma once

#include <cstdint>
#include <span>

namespace Corvane::Binary {

// The checksum of the bytes. `initial` is 0, or the checksum of what stands before them.
[[nodiscard]] std::uint32_t getCrc32(std::span<const std::uint8_t> bytes, std::uint32_t initial);

// The same for one piece of many: without a line in the log.
[[nodiscard]] std::uint32_t continueCrc32(std::span<const std::uint8_t> bytes, std::uint32_t crc) noexcept;

}  // namespace Corvane::Binary
