#include "binary/md5.h"

#include "core/log.h"

#include <bit>

namespace Corvane::Binary {
namespace {

std::uint32_t loadWord(const std::uint8_t* in) noexcept {
    return std::uint32_t{in[0]} | (std::uint32_t{in[1]} << 8) | (std::uint32_t{in[2]} << 16) |
           (std::uint32_t{in[3]} << 24);
}

// The steps of the four rounds. Each waits for `b`, the result of the step before, so that what does not need
// it is put together first; in round 2 the two halves of the function share no bit and may be added one after
// the other.
[[gnu::always_inline]] inline void step1(std::uint32_t& a, std::uint32_t b, std::uint32_t c, std::uint32_t d,
                                         std::uint32_t term, int shift) noexcept {
    a = std::rotl(a + term + (d ^ (b & (c ^ d))), shift) + b;
}

[[gnu::always_inline]] inline void step2(std::uint32_t& a, std::uint32_t b, std::uint32_t c, std::uint32_t d,
                                         std::uint32_t term, int shift) noexcept {
    a = std::rotl(a + term + (c & ~d) + (b & d), shift) + b;
}

[[gnu::always_inline]] inline void step3(std::uint32_t& a, std::uint32_t b, std::uint32_t c, std::uint32_t d,
                                         std::uint32_t term, int shift) noexcept {
    a = std::rotl(a + term + (b ^ (c ^ d)), shift) + b;
}

[[gnu::always_inline]] inline void step4(std::uint32_t& a, std::uint32_t b, std::uint32_t c, std::uint32_t d,
                                         std::uint32_t term, int shift) noexcept {
    a = std::rotl(a + term + (c ^ (b | ~d)), shift) + b;
}

}  // namespace

void detail::Md5Algorithm::process(const std::uint8_t* blocks, std::size_t count) noexcept {
    for (const std::uint8_t* in = blocks; count != 0; --count, in += 64) {
        auto [a, b, c, d] = words_;
        step1(a, b, c, d, loadWord(in + 0) + 0xD76AA478, 7);
        step1(d, a, b, c, loadWord(in + 4) + 0xE8C7B756, 12);
        step1(c, d, a, b, loadWord(in + 8) + 0x242070DB, 17);
        step1(b, c, d, a, loadWord(in + 12) + 0xC1BDCEEE, 22);
        step1(a, b, c, d, loadWord(in + 16) + 0xF57C0FAF, 7);
        step1(d, a, b, c, loadWord(in + 20) + 0x4787C62A, 12);
        step1(c, d, a, b, loadWord(in + 24) + 0xA8304613, 17);
        step1(b, c, d, a, loadWord(in + 28) + 0xFD469501, 22);
        step1(a, b, c, d, loadWord(in + 32) + 0x698098D8, 7);
        step1(d, a, b, c, loadWord(in + 36) + 0x8B44F7AF, 12);
        step1(c, d, a, b, loadWord(in + 40) + 0xFFFF5BB1, 17);
        step1(b, c, d, a, loadWord(in + 44) + 0x895CD7BE, 22);
        step1(a, b, c, d, loadWord(in + 48) + 0x6B901122, 7);
        step1(d, a, b, c, loadWord(in + 52) + 0xFD987193, 12);
        step1(c, d, a, b, loadWord(in + 56) + 0xA679438E, 17);
        step1(b, c, d, a, loadWord(in + 60) + 0x49B40821, 22);
        step2(a, b, c, d, loadWord(in + 4) + 0xF61E2562, 5);
        step2(d, a, b, c, loadWord(in + 24) + 0xC040B340, 9);
        step2(c, d, a, b, loadWord(in + 44) + 0x265E5A51, 14);
        step2(b, c, d, a, loadWord(in + 0) + 0xE9B6C7AA, 20);
        step2(a, b, c, d, loadWord(in + 20) + 0xD62F105D, 5);
        step2(d, a, b, c, loadWord(in + 40) + 0x02441453, 9);
        step2(c, d, a, b, loadWord(in + 60) + 0xD8A1E681, 14);
        step2(b, c, d, a, loadWord(in + 16) + 0xE7D3FBC8, 20);
        step2(a, b, c, d, loadWord(in + 36) + 0x21E1CDE6, 5);
        step2(d, a, b, c, loadWord(in + 56) + 0xC33707D6, 9);
        step2(c, d, a, b, loadWord(in + 12) + 0xF4D50D87, 14);
        step2(b, c, d, a, loadWord(in + 32) + 0x455A14ED, 20);
        step2(a, b, c, d, loadWord(in + 52) + 0xA9E3E905, 5);
        step2(d, a, b, c, loadWord(in + 8) + 0xFCEFA3F8, 9);
        step2(c, d, a, b, loadWord(in + 28) + 0x676F02D9, 14);
        step2(b, c, d, a, loadWord(in + 48) + 0x8D2A4C8A, 20);
        step3(a, b, c, d, loadWord(in + 20) + 0xFFFA3942, 4);
        step3(d, a, b, c, loadWord(in + 32) + 0x8771F681, 11);
        step3(c, d, a, b, loadWord(in + 44) + 0x6D9D6122, 16);
        step3(b, c, d, a, loadWord(in + 56) + 0xFDE5380C, 23);
        step3(a, b, c, d, loadWord(in + 4) + 0xA4BEEA44, 4);
        step3(d, a, b, c, loadWord(in + 16) + 0x4BDECFA9, 11);
        step3(c, d, a, b, loadWord(in + 28) + 0xF6BB4B60, 16);
        step3(b, c, d, a, loadWord(in + 40) + 0xBEBFBC70, 23);
        step3(a, b, c, d, loadWord(in + 52) + 0x289B7EC6, 4);
        step3(d, a, b, c, loadWord(in + 0) + 0xEAA127FA, 11);
        step3(c, d, a, b, loadWord(in + 12) + 0xD4EF3085, 16);
        step3(b, c, d, a, loadWord(in + 24) + 0x04881D05, 23);
        step3(a, b, c, d, loadWord(in + 36) + 0xD9D4D039, 4);
        step3(d, a, b, c, loadWord(in + 48) + 0xE6DB99E5, 11);
        step3(c, d, a, b, loadWord(in + 60) + 0x1FA27CF8, 16);
        step3(b, c, d, a, loadWord(in + 8) + 0xC4AC5665, 23);
        step4(a, b, c, d, loadWord(in + 0) + 0xF4292244, 6);
        step4(d, a, b, c, loadWord(in + 28) + 0x432AFF97, 10);
        step4(c, d, a, b, loadWord(in + 56) + 0xAB9423A7, 15);
        step4(b, c, d, a, loadWord(in + 20) + 0xFC93A039, 21);
        step4(a, b, c, d, loadWord(in + 48) + 0x655B59C3, 6);
        step4(d, a, b, c, loadWord(in + 12) + 0x8F0CCC92, 10);
        step4(c, d, a, b, loadWord(in + 40) + 0xFFEFF47D, 15);
        step4(b, c, d, a, loadWord(in + 4) + 0x85845DD1, 21);
        step4(a, b, c, d, loadWord(in + 32) + 0x6FA87E4F, 6);
        step4(d, a, b, c, loadWord(in + 60) + 0xFE2CE6E0, 10);
        step4(c, d, a, b, loadWord(in + 24) + 0xA3014314, 15);
        step4(b, c, d, a, loadWord(in + 52) + 0x4E0811A1, 21);
        step4(a, b, c, d, loadWord(in + 16) + 0xF7537E82, 6);
        step4(d, a, b, c, loadWord(in + 44) + 0xBD3AF235, 10);
        step4(c, d, a, b, loadWord(in + 8) + 0x2AD7D2BB, 15);
        step4(b, c, d, a, loadWord(in + 36) + 0xEB86D391, 21);
        words_ = {words_[0] + a, words_[1] + b, words_[2] + c, words_[3] + d};
    }
}

Bytes getMd5(std::span<const std::uint8_t> bytes) {
    writeLog(LogLevel::debug, L"Corvane::Binary::getMd5", L"[in] size: ", bytes.size());
    const MD5::Value value = MD5::of(bytes);
    return {value.begin(), value.end()};
}

}  // namespace Corvane::Binary
