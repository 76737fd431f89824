// The frame shared by MD5 and SHA-256: blocks of 64 bytes, padding, and the length of the input in bits at
// the end.
#pragma once

#include <algorithm>
#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <span>

namespace Corvane::Binary::detail {

// A running digest over `Algorithm`, which holds the chaining words and offers:
//   - wordCount, byteOrder: how many 32-bit words there are, and the order of bytes in digest and length
//   - words(): the chaining words
//   - process(blocks, count): takes in whole blocks
//
// A copy continues independently of the original. Not for use by two threads at once.
template <class Algorithm>
class BlockDigest {
public:
    static constexpr std::size_t size = Algorithm::wordCount * 4;
    using Value = std::array<std::uint8_t, size>;

    // The digest of bytes that are there as a whole.
    [[nodiscard]] static Value of(std::span<const std::uint8_t> bytes) noexcept {
        BlockDigest digest;
        digest.update(bytes);
        return digest.finish();
    }

    // Takes in the next part of the input, of any length.
    void update(std::span<const std::uint8_t> bytes) noexcept {
        length_ += bytes.size();
        if (pendingSize_ != 0)
            bytes = bytes.subspan(fillPending(bytes));
        const std::size_t blocks = bytes.size() / blockSize;
        algorithm_.process(bytes.data(), blocks);
        // Nothing is left over here while a block is still being filled.
        fillPending(bytes.subspan(blocks * blockSize));
    }

    // The digest of all that was taken in; the object is used up.
    [[nodiscard]] Value finish() noexcept {
        const std::uint64_t bits = length_ * 8;
        pending_[pendingSize_++] = 0x80;
        if (pendingSize_ > lengthOffset) {
            fillWithZeros(blockSize);
            algorithm_.process(pending_.data(), 1);
            pendingSize_ = 0;
        }
        fillWithZeros(lengthOffset);
        constexpr bool little = Algorithm::byteOrder == std::endian::little;
        store(static_cast<std::uint32_t>(little ? bits : bits >> 32), &pending_[lengthOffset]);
        store(static_cast<std::uint32_t>(little ? bits >> 32 : bits), &pending_[lengthOffset + 4]);
        algorithm_.process(pending_.data(), 1);

        Value value{};
        for (std::size_t i = 0; i < Algorithm::wordCount; ++i)
            store(algorithm_.words()[i], value.data() + 4 * i);
        return value;
    }

private:
    static constexpr std::size_t blockSize = 64;
    static constexpr std::size_t lengthOffset = 56;

    static void store(std::uint32_t word, std::uint8_t* out) noexcept {
        for (unsigned i = 0; i < 4; ++i) {
            const unsigned shift = Algorithm::byteOrder == std::endian::little ? 8 * i : 24 - 8 * i;
            out[i] = static_cast<std::uint8_t>(word >> shift);
        }
    }

    void fillWithZeros(std::size_t end) noexcept {
        std::fill(&pending_[pendingSize_], pending_.data() + end, std::uint8_t{0});
    }

    // Adds to the block that is being filled and takes it in once it is full; returns how many bytes it took.
    std::size_t fillPending(std::span<const std::uint8_t> bytes) noexcept {
        const std::size_t taken = std::min(bytes.size(), blockSize - pendingSize_);
        std::ranges::copy(bytes.first(taken), pending_.begin() + static_cast<std::ptrdiff_t>(pendingSize_));
        pendingSize_ += taken;
        if (pendingSize_ == blockSize) {
            algorithm_.process(pending_.data(), 1);
            pendingSize_ = 0;
        }
        return taken;
    }

    Algorithm algorithm_;
    std::uint64_t length_{0};
    std::size_t pendingSize_{0};
    std::array<std::uint8_t, blockSize> pending_{};
};

}  // namespace Corvane::Binary::detail
