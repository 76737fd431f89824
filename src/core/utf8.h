// UTF-8 and wide text. Wide text is a sequence of UTF-16 code units on every platform, whatever the size of
// wchar_t. Faults of a text become U+FFFD here, as in the system's conversions; binary/utf.h refuses them.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>

namespace Corvane {

// Each surrogate without its partner is replaced.
[[nodiscard]] std::string toUtf8(std::wstring_view text);

// Each byte that belongs to no well-formed sequence is replaced.
[[nodiscard]] std::wstring fromUtf8(std::string_view text);

namespace detail {

constexpr bool isHighSurrogate(std::uint32_t unit) noexcept {
    return unit >= 0xD800 && unit <= 0xDBFF;
}

constexpr bool isLowSurrogate(std::uint32_t unit) noexcept {
    return unit >= 0xDC00 && unit <= 0xDFFF;
}

// How many units of UTF-16 a code point takes.
constexpr std::size_t unitCount(std::uint32_t codePoint) noexcept {
    return codePoint > 0xFFFF ? 2 : 1;
}

// Writes the units of a code point and returns where the next ones go.
constexpr wchar_t* writeCodePoint(std::uint32_t codePoint, wchar_t* out) noexcept {
    if (unitCount(codePoint) == 2) {
        const std::uint32_t offset = codePoint - 0x10000;
        *out++ = static_cast<wchar_t>(0xD800 + (offset >> 10));
        *out++ = static_cast<wchar_t>(0xDC00 + (offset & 0x3FF));
    } else {
        *out++ = static_cast<wchar_t>(codePoint);
    }
    return out;
}

struct CodePoint {
    std::uint32_t value;
    std::size_t length;  // bytes of its sequence; 0 where there is no well-formed one
};

// What a first byte says about its sequence: its length, its share of the code point, and the range of the
// second byte, which alone excludes longer forms than needed, surrogates and values above 0x10FFFF (table
// 3-7).
struct Lead {
    std::size_t length;
    std::uint32_t bits;
    std::uint8_t secondFrom;
    std::uint8_t secondTo;
};

constexpr std::uint8_t continuationFrom = 0x80;
constexpr std::uint8_t continuationTo = 0xBF;

constexpr Lead readLead(std::uint8_t byte) noexcept {
    const auto bits = [byte](std::uint32_t mask) { return byte & mask; };
    if (byte < 0x80)
        return {1, byte, 0, 0};
    if (byte < 0xC2 || byte > 0xF4)
        return {0, 0, 0, 0};
    if (byte < 0xE0)
        return {2, bits(0x1F), continuationFrom, continuationTo};
    if (byte < 0xF0) {
        const std::uint8_t from = byte == 0xE0 ? 0xA0 : continuationFrom;
        return {3, bits(0x0F), from, byte == 0xED ? std::uint8_t{0x9F} : continuationTo};
    }
    const std::uint8_t from = byte == 0xF0 ? 0x90 : continuationFrom;
    return {4, bits(0x07), from, byte == 0xF4 ? std::uint8_t{0x8F} : continuationTo};
}

// The code point at the start of a text that is not empty.
constexpr CodePoint readUtf8(std::span<const std::uint8_t> text) noexcept {
    const Lead lead = readLead(text[0]);
    if (lead.length > text.size())
        return {0, 0};
    std::uint32_t value = lead.bits;
    for (std::size_t i = 1; i < lead.length; ++i) {
        const std::uint8_t byte = text[i];
        const std::uint8_t from = i == 1 ? lead.secondFrom : continuationFrom;
        const std::uint8_t to = i == 1 ? lead.secondTo : continuationTo;
        if (byte < from || byte > to)
            return {0, 0};
        value = (value << 6) | (byte & 0x3F);
    }
    return {value, lead.length};
}

}  // namespace detail
}  // namespace Corvane
