// Sixteen Base64 characters at a time with SSE2, which every 64-bit processor and every 32-bit one that runs
// a supported Windows has. Used by the decoder only.
#pragma once

#include <emmintrin.h>

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>

namespace Corvane::detail {

inline constexpr std::size_t vectorCharacters = 16;
inline constexpr std::size_t vectorBytes = 12;

inline __m128i loadVector(const void* from) noexcept {
    return _mm_loadu_si128(static_cast<const __m128i*>(from));
}

// The next sixteen characters, one byte each. Packing saturates: a code above 0xFF becomes 0 or 0xFF, neither
// of which is in the alphabet.
template <typename Char>
__m128i loadCharacters(const Char* in) noexcept {
    if constexpr (sizeof(Char) == 1) {
        return loadVector(in);
    } else if constexpr (sizeof(Char) == 2) {
        return _mm_packus_epi16(loadVector(in), loadVector(in + 8));
    } else {
        return _mm_packus_epi16(_mm_packs_epi32(loadVector(in), loadVector(in + 4)),
                                _mm_packs_epi32(loadVector(in + 8), loadVector(in + 12)));
    }
}

inline __m128i repeat(int byte) noexcept {
    return _mm_set1_epi8(static_cast<char>(byte));
}

// All ones where the unsigned byte is at most `limit`.
inline __m128i atMost(__m128i bytes, int limit) noexcept {
    return _mm_cmpeq_epi8(_mm_min_epu8(bytes, repeat(limit)), bytes);
}

// Replaces each character of the alphabet by its six bits and any other by zero; returns one bit per
// character, set where it is of the alphabet.
inline std::uint32_t toValues(__m128i& characters) noexcept {
    // Folded to lower case, the letters are one range; their case bit, moved to the sign, adds 26 to the
    // small ones.
    const __m128i letter = _mm_sub_epi8(_mm_or_si128(characters, repeat(0x20)), repeat('a'));
    const __m128i isLetter = atMost(letter, 25);
    const __m128i isSmall = _mm_cmpgt_epi8(_mm_setzero_si128(), _mm_slli_epi16(characters, 2));
    const __m128i letterValue = _mm_add_epi8(letter, _mm_and_si128(isSmall, repeat(26)));
    const __m128i isDigit = atMost(_mm_sub_epi8(characters, repeat('0')), 9);
    const __m128i isPlus = _mm_cmpeq_epi8(characters, repeat('+'));
    const __m128i isSlash = _mm_cmpeq_epi8(characters, repeat('/'));

    const __m128i known = _mm_or_si128(_mm_or_si128(isLetter, isDigit), _mm_or_si128(isPlus, isSlash));
    const __m128i letters = _mm_and_si128(isLetter, letterValue);
    const __m128i digits = _mm_and_si128(isDigit, _mm_add_epi8(characters, repeat(52 - '0')));
    const __m128i signs = _mm_or_si128(_mm_and_si128(isPlus, repeat(62)), _mm_and_si128(isSlash, repeat(63)));
    characters = _mm_or_si128(_mm_or_si128(letters, digits), signs);
    return static_cast<std::uint32_t>(_mm_movemask_epi8(known));
}

// Writes the twelve bytes of sixteen characters and one byte more. Returns how many of the four groups, from
// the first on, consist of characters of the alphabet; the bytes of the others mean nothing.
template <typename Char>
std::size_t decodeVector(const Char* in, std::uint8_t* out) noexcept {
    __m128i values = loadCharacters(in);
    const std::uint32_t known = toValues(values);
    // Four values a, b, c, d of a group become a * 64 + b and c * 64 + d, then the 24 bits of the group.
    const __m128i high = _mm_slli_epi16(_mm_and_si128(values, _mm_set1_epi16(0xFF)), 6);
    const __m128i twelves = _mm_or_si128(high, _mm_srli_epi16(values, 8));
    const __m128i groups = _mm_slli_epi32(_mm_madd_epi16(twelves, _mm_set1_epi32(0x00011000)), 8);
    const auto store = [out](__m128i group, std::size_t offset) {
        const std::uint32_t bytes = __builtin_bswap32(static_cast<std::uint32_t>(_mm_cvtsi128_si32(group)));
        std::memcpy(out + offset, &bytes, sizeof(bytes));
    };
    store(groups, 0);
    store(_mm_shuffle_epi32(groups, 1), 3);
    store(_mm_shuffle_epi32(groups, 2), 6);
    store(_mm_shuffle_epi32(groups, 3), 9);
    return static_cast<std::size_t>(std::countr_one(known)) / 4;
}

}  // namespace Corvane::detail
