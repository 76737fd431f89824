// Where compressed or restored data goes, piece by piece.
#pragma once

#include "binary/bytes.h"
#include "core/errors.h"
#include "core/exception.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <span>

namespace Corvane::Compression::detail {

// Takes the next piece; the memory is used again afterwards. May throw.
using Sink = std::function<void(std::span<const std::uint8_t>)>;

// Throws Exception E_BINARY_MAX_SIZE beyond largestBinary.
inline Sink appendTo(Bytes& bytes) {
    return [&bytes](std::span<const std::uint8_t> piece) {
        if (piece.size() > largestBinary - bytes.size())
            throw Exception(E_BINARY_MAX_SIZE);
        bytes.insert(bytes.end(), piece.begin(), piece.end());
    };
}

// Pieces that stay in the processor's cache between the one who writes them and the one who reads them.
inline constexpr std::size_t pieceSize = std::size_t{1} << 17;

}  // namespace Corvane::Compression::detail
