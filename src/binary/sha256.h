// SHA-256 (FIPS 180-4).
#pragma once

#include "binary/block_digest.h"
#include "binary/bytes.h"

namespace Corvane::Binary {
namespace detail {

class Sha256Algorithm {
public:
    static constexpr std::size_t wordCount = 8;
    static constexpr std::endian byteOrder = std::endian::big;

    void process(const std::uint8_t* blocks, std::size_t count) noexcept;
    [[nodiscard]] const std::array<std::uint32_t, wordCount>& words() const noexcept { return words_; }

private:
    std::array<std::uint32_t, wordCount> words_{0x6A09E667, 0xBB67AE85, 0x3C6EF372, 0xA54FF53A,
                                                0x510E527F, 0x9B05688C, 0x1F83D9AB, 0x5BE0CD19};
};

}  // namespace detail

using SHA256 = detail::BlockDigest<detail::Sha256Algorithm>;

// The digest of the bytes, 32 bytes long.
[[nodiscard]] Bytes getSha256(std::span<const std::uint8_t> bytes);

}  // namespace Corvane::Binary
