// Whether a signed message holds its content: the system says of a detached one, given without its data, that
// all is well, and gives empty content.
#pragma once

#include <cstdint>
#include <span>

namespace Corvane::detail {

enum class Content : std::uint8_t { inside, detached, unreadable };

// By the beginning of the message, in BER. What cannot be read is told in the log.
Content contentOf(std::span<const std::uint8_t> message);

}  // namespace Corvane::detail
