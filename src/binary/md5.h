// MD5 (RFC 1321), for comparing with digests published elsewhere; it protects nothing.
#pragma once

#include "binary/block_digest.h"
#include "binary/bytes.h"

namespace Corvane::Binary {
namespace detail {

class Md5Algorithm {
public:
    static constexpr std::size_t wordCount = 4;
    static constexpr std::endian byteOrder = std::endian::little;

    void process(const std::uint8_t* blocks, std::size_t count) noexcept;
    [[nodiscard]] const std::array<std::uint32_t, wordCount>& words() const noexcept { return words_; }

private:
    std::array<std::uint32_t, wordCount> words_{0x67452301, 0xEFCDAB89, 0x98BADCFE, 0x10325476};
};

}  // namespace detail

using MD5 = detail::BlockDigest<detail::Md5Algorithm>;

// The digest of the bytes, 16 bytes long.
[[nodiscard]] Bytes getMd5(std::span<const std::uint8_t> bytes);

}  // namespace Corvane::Binary
