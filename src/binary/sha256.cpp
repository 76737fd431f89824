#include "binary/sha256.h"

#include "core/log.h"

#include <bit>

namespace Corvane::Binary {
namespace {

std::uint32_t loadWord(const std::uint8_t* in) noexcept {
    return (std::uint32_t{in[0]} << 24) | (std::uint32_t{in[1]} << 16) | (std::uint32_t{in[2]} << 8) |
           std::uint32_t{in[3]};
}

// What the message schedule adds to the word of sixteen rounds before, from those of 15, 7 and 2 rounds
// before.
[[gnu::always_inline]] inline std::uint32_t expand(std::uint32_t w15, std::uint32_t w7,
                                                   std::uint32_t w2) noexcept {
    const std::uint32_t sigma0 = std::rotr(w15, 7) ^ std::rotr(w15, 18) ^ (w15 >> 3);
    const std::uint32_t sigma1 = std::rotr(w2, 17) ^ std::rotr(w2, 19) ^ (w2 >> 10);
    return sigma0 + w7 + sigma1;
}

// One round; the variables move on by one place, which the caller does by their order.
[[gnu::always_inline]] inline void round(std::uint32_t a, std::uint32_t b, std::uint32_t c, std::uint32_t& d,
                                         std::uint32_t e, std::uint32_t f, std::uint32_t g, std::uint32_t& h,
                                         std::uint32_t constant, std::uint32_t word) noexcept {
    const std::uint32_t sum1 = std::rotr(e, 6) ^ std::rotr(e, 11) ^ std::rotr(e, 25);
    const std::uint32_t choice = g ^ (e & (f ^ g));
    const std::uint32_t sum0 = std::rotr(a, 2) ^ std::rotr(a, 13) ^ std::rotr(a, 22);
    const std::uint32_t majority = b ^ ((a ^ b) & (b ^ c));
    h += sum1 + choice + constant + word;
    d += h;
    h += sum0 + majority;
}

}  // namespace

// Written out in full: the sixteen words stay in registers or in fixed places, the constants are immediate
// values.
void detail::Sha256Algorithm::process(const std::uint8_t* blocks, std::size_t count) noexcept {
    for (const std::uint8_t* in = blocks; count != 0; --count, in += 64) {
        auto [a, b, c, d, e, f, g, h] = words_;
        std::array<std::uint32_t, 16> w{};
        round(a, b, c, d, e, f, g, h, 0x428A2F98, w[0] = loadWord(in + 0));
        round(h, a, b, c, d, e, f, g, 0x71374491, w[1] = loadWord(in + 4));
        round(g, h, a, b, c, d, e, f, 0xB5C0FBCF, w[2] = loadWord(in + 8));
        round(f, g, h, a, b, c, d, e, 0xE9B5DBA5, w[3] = loadWord(in + 12));
        round(e, f, g, h, a, b, c, d, 0x3956C25B, w[4] = loadWord(in + 16));
        round(d, e, f, g, h, a, b, c, 0x59F111F1, w[5] = loadWord(in + 20));
        round(c, d, e, f, g, h, a, b, 0x923F82A4, w[6] = loadWord(in + 24));
        round(b, c, d, e, f, g, h, a, 0xAB1C5ED5, w[7] = loadWord(in + 28));
        round(a, b, c, d, e, f, g, h, 0xD807AA98, w[8] = loadWord(in + 32));
        round(h, a, b, c, d, e, f, g, 0x12835B01, w[9] = loadWord(in + 36));
        round(g, h, a, b, c, d, e, f, 0x243185BE, w[10] = loadWord(in + 40));
        round(f, g, h, a, b, c, d, e, 0x550C7DC3, w[11] = loadWord(in + 44));
        round(e, f, g, h, a, b, c, d, 0x72BE5D74, w[12] = loadWord(in + 48));
        round(d, e, f, g, h, a, b, c, 0x80DEB1FE, w[13] = loadWord(in + 52));
        round(c, d, e, f, g, h, a, b, 0x9BDC06A7, w[14] = loadWord(in + 56));
        round(b, c, d, e, f, g, h, a, 0xC19BF174, w[15] = loadWord(in + 60));
        round(a, b, c, d, e, f, g, h, 0xE49B69C1, w[0] += expand(w[1], w[9], w[14]));
        round(h, a, b, c, d, e, f, g, 0xEFBE4786, w[1] += expand(w[2], w[10], w[15]));
        round(g, h, a, b, c, d, e, f, 0x0FC19DC6, w[2] += expand(w[3], w[11], w[0]));
        round(f, g, h, a, b, c, d, e, 0x240CA1CC, w[3] += expand(w[4], w[12], w[1]));
        round(e, f, g, h, a, b, c, d, 0x2DE92C6F, w[4] += expand(w[5], w[13], w[2]));
        round(d, e, f, g, h, a, b, c, 0x4A7484AA, w[5] += expand(w[6], w[14], w[3]));
        round(c, d, e, f, g, h, a, b, 0x5CB0A9DC, w[6] += expand(w[7], w[15], w[4]));
        round(b, c, d, e, f, g, h, a, 0x76F988DA, w[7] += expand(w[8], w[0], w[5]));
        round(a, b, c, d, e, f, g, h, 0x983E5152, w[8] += expand(w[9], w[1], w[6]));
        round(h, a, b, c, d, e, f, g, 0xA831C66D, w[9] += expand(w[10], w[2], w[7]));
        round(g, h, a, b, c, d, e, f, 0xB00327C8, w[10] += expand(w[11], w[3], w[8]));
        round(f, g, h, a, b, c, d, e, 0xBF597FC7, w[11] += expand(w[12], w[4], w[9]));
        round(e, f, g, h, a, b, c, d, 0xC6E00BF3, w[12] += expand(w[13], w[5], w[10]));
        round(d, e, f, g, h, a, b, c, 0xD5A79147, w[13] += expand(w[14], w[6], w[11]));
        round(c, d, e, f, g, h, a, b, 0x06CA6351, w[14] += expand(w[15], w[7], w[12]));
        round(b, c, d, e, f, g, h, a, 0x14292967, w[15] += expand(w[0], w[8], w[13]));
        round(a, b, c, d, e, f, g, h, 0x27B70A85, w[0] += expand(w[1], w[9], w[14]));
        round(h, a, b, c, d, e, f, g, 0x2E1B2138, w[1] += expand(w[2], w[10], w[15]));
        round(g, h, a, b, c, d, e, f, 0x4D2C6DFC, w[2] += expand(w[3], w[11], w[0]));
        round(f, g, h, a, b, c, d, e, 0x53380D13, w[3] += expand(w[4], w[12], w[1]));
        round(e, f, g, h, a, b, c, d, 0x650A7354, w[4] += expand(w[5], w[13], w[2]));
        round(d, e, f, g, h, a, b, c, 0x766A0ABB, w[5] += expand(w[6], w[14], w[3]));
        round(c, d, e, f, g, h, a, b, 0x81C2C92E, w[6] += expand(w[7], w[15], w[4]));
        round(b, c, d, e, f, g, h, a, 0x92722C85, w[7] += expand(w[8], w[0], w[5]));
        round(a, b, c, d, e, f, g, h, 0xA2BFE8A1, w[8] += expand(w[9], w[1], w[6]));
        round(h, a, b, c, d, e, f, g, 0xA81A664B, w[9] += expand(w[10], w[2], w[7]));
        round(g, h, a, b, c, d, e, f, 0xC24B8B70, w[10] += expand(w[11], w[3], w[8]));
        round(f, g, h, a, b, c, d, e, 0xC76C51A3, w[11] += expand(w[12], w[4], w[9]));
        round(e, f, g, h, a, b, c, d, 0xD192E819, w[12] += expand(w[13], w[5], w[10]));
        round(d, e, f, g, h, a, b, c, 0xD6990624, w[13] += expand(w[14], w[6], w[11]));
        round(c, d, e, f, g, h, a, b, 0xF40E3585, w[14] += expand(w[15], w[7], w[12]));
        round(b, c, d, e, f, g, h, a, 0x106AA070, w[15] += expand(w[0], w[8], w[13]));
        round(a, b, c, d, e, f, g, h, 0x19A4C116, w[0] += expand(w[1], w[9], w[14]));
        round(h, a, b, c, d, e, f, g, 0x1E376C08, w[1] += expand(w[2], w[10], w[15]));
        round(g, h, a, b, c, d, e, f, 0x2748774C, w[2] += expand(w[3], w[11], w[0]));
        round(f, g, h, a, b, c, d, e, 0x34B0BCB5, w[3] += expand(w[4], w[12], w[1]));
        round(e, f, g, h, a, b, c, d, 0x391C0CB3, w[4] += expand(w[5], w[13], w[2]));
        round(d, e, f, g, h, a, b, c, 0x4ED8AA4A, w[5] += expand(w[6], w[14], w[3]));
        round(c, d, e, f, g, h, a, b, 0x5B9CCA4F, w[6] += expand(w[7], w[15], w[4]));
        round(b, c, d, e, f, g, h, a, 0x682E6FF3, w[7] += expand(w[8], w[0], w[5]));
        round(a, b, c, d, e, f, g, h, 0x748F82EE, w[8] += expand(w[9], w[1], w[6]));
        round(h, a, b, c, d, e, f, g, 0x78A5636F, w[9] += expand(w[10], w[2], w[7]));
        round(g, h, a, b, c, d, e, f, 0x84C87814, w[10] += expand(w[11], w[3], w[8]));
        round(f, g, h, a, b, c, d, e, 0x8CC70208, w[11] += expand(w[12], w[4], w[9]));
        round(e, f, g, h, a, b, c, d, 0x90BEFFFA, w[12] += expand(w[13], w[5], w[10]));
        round(d, e, f, g, h, a, b, c, 0xA4506CEB, w[13] += expand(w[14], w[6], w[11]));
        round(c, d, e, f, g, h, a, b, 0xBEF9A3F7, w[14] += expand(w[15], w[7], w[12]));
        round(b, c, d, e, f, g, h, a, 0xC67178F2, w[15] += expand(w[0], w[8], w[13]));
        words_ = {words_[0] + a, words_[1] + b, words_[2] + c, words_[3] + d,
                  words_[4] + e, words_[5] + f, words_[6] + g, words_[7] + h};
    }
}

Bytes getSha256(std::span<const std::uint8_t> bytes) {
    writeLog(LogLevel::debug, L"Corvane::Binary::getSha256", L"[in] size: ", bytes.size());
    const SHA256::Value value = SHA256::of(bytes);
    return {value.begin(), value.end()};
}

}  // namespace Corvane::Binary
