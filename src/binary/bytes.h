// The one type in which bytes travel through the component.
#pragma once

#include <cstdint>
#include <memory>
#include <new>
#include <vector>

namespace Corvane {

using Bytes = std::vector<std::uint8_t>;

// Shared, never copied, and not modified once it has been handed on: any thread may read it.
using SharedBytes = std::shared_ptr<Bytes>;

// The most bytes that a script gets as one object: it could not be told the size of more.
inline constexpr std::uint64_t largestBinary = 0xFFFFFFFF;

// Sees to it that `size` bytes can be put into `bytes`. Throws std::bad_alloc, also for more than any memory
// holds.
inline void makeRoom(Bytes& bytes, std::uint64_t size) {
    if (size > bytes.max_size())
        throw std::bad_alloc();
    bytes.reserve(static_cast<std::size_t>(size));
}

}  // namespace Corvane
