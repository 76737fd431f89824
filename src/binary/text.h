// Bytes as narrow text, before any code page is applied.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>

namespace Corvane::Binary {

// The bytes from `offset` on as narrow text, embedded zeros included; empty if there are no bytes at all.
// Otherwise an offset not below the size is a std::out_of_range "invalid offset", which is also written to
// the log.
[[nodiscard]] std::string toString(std::span<const std::uint8_t> bytes, std::size_t offset);

}  // namespace Corvane::Binary
