#include "binary/utf.h"

#include <cstring>
#include <string_view>
#include <type_traits>
#include <utility>

namespace Corvane {
namespace {

constexpr bool isHighSurrogate(std::uint32_t unit) noexcept {
    return unit >= 0xD800 && unit <= 0xDBFF;
}

constexpr bool isLowSurrogate(std::uint32_t unit) noexcept {
    return unit >= 0xDC00 && unit <= 0xDFFF;
}

constexpr std::size_t unitCount(std::uint32_t codePoint) noexcept {
    return codePoint > 0xFFFF ? 2 : 1;
}

wchar_t* writeCodePoint(std::uint32_t codePoint, wchar_t* out) noexcept {
    if (unitCount(codePoint) == 2) {
        const std::uint32_t offset = codePoint - 0x10000;
        *out++ = static_cast<wchar_t>(0xD800 + (offset >> 10));
        *out++ = static_cast<wchar_t>(0xDC00 + (offset & 0x3FF));
    } else {
        *out++ = static_cast<wchar_t>(codePoint);
    }
    return out;
}

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
    if (byte < 0x80) {
        return {1, byte, 0, 0};
    }
    if (byte < 0xC2 || byte > 0xF4) {
        return {0, 0, 0, 0};
    }
    if (byte < 0xE0) {
        return {2, bits(0x1F), continuationFrom, continuationTo};
    }
    if (byte < 0xF0) {
        const std::uint8_t from = byte == 0xE0 ? 0xA0 : continuationFrom;
        return {3, bits(0x0F), from, byte == 0xED ? std::uint8_t{0x9F} : continuationTo};
    }
    const std::uint8_t from = byte == 0xF0 ? 0x90 : continuationFrom;
    return {4, bits(0x07), from, byte == 0xF4 ? std::uint8_t{0x8F} : continuationTo};
}

struct CodePoint {
    std::uint32_t value;
    std::size_t length;  // bytes of its sequence; 0 where there is no well-formed one
};

// The code point at the start of a text that is not empty.
CodePoint readUtf8(std::span<const std::uint8_t> text) noexcept {
    const Lead lead = readLead(text[0]);
    if (lead.length > text.size()) {
        return {0, 0};
    }
    std::uint32_t value = lead.bits;
    for (std::size_t i = 1; i < lead.length; ++i) {
        const std::uint8_t byte = text[i];
        const std::uint8_t from = i == 1 ? lead.secondFrom : continuationFrom;
        const std::uint8_t to = i == 1 ? lead.secondTo : continuationTo;
        if (byte < from || byte > to) {
            return {0, 0};
        }
        value = (value << 6) | (byte & 0x3F);
    }
    return {value, lead.length};
}

constexpr std::size_t asciiStep = 8;

// Whether the text begins with eight ASCII characters, which most text does nearly everywhere.
bool startsWithAscii(std::span<const std::uint8_t> text) noexcept {
    if (text.size() < asciiStep) {
        return false;
    }
    std::uint64_t word = 0;
    std::memcpy(&word, text.data(), sizeof(word));
    return (word & 0x8080808080808080U) == 0;
}

// The number of code units of the text in UTF-16; nothing if the text is not well-formed.
std::optional<std::size_t> measureUtf8(std::span<const std::uint8_t> text) noexcept {
    std::size_t units = 0;
    while (!text.empty()) {
        if (startsWithAscii(text)) {
            units += asciiStep;
            text = text.subspan(asciiStep);
            continue;
        }
        const CodePoint next = readUtf8(text);
        if (next.length == 0) {
            return std::nullopt;
        }
        units += unitCount(next.value);
        text = text.subspan(next.length);
    }
    return units;
}

std::uint32_t readUnit(const std::uint8_t* in) noexcept {
    return in[0] | (std::uint32_t{in[1]} << 8);
}

std::wstring readUnits(std::span<const std::uint8_t> bytes) {
    std::wstring text(bytes.size() / 2, L'\0');
    const std::uint8_t* in = bytes.data();
    for (wchar_t& unit : text) {
        unit = static_cast<wchar_t>(readUnit(in));
        in += 2;
    }
    return text;
}

// wchar_t has a sign on some platforms.
constexpr std::uint32_t toUnit(wchar_t character) noexcept {
    return static_cast<std::make_unsigned_t<wchar_t>>(character);
}

bool hasPairedSurrogates(std::wstring_view text) noexcept {
    for (std::size_t i = 0; i < text.size(); ++i) {
        const std::uint32_t unit = toUnit(text[i]);
        if (isHighSurrogate(unit)) {
            ++i;
            if (i == text.size() || !isLowSurrogate(toUnit(text[i]))) {
                return false;
            }
        } else if (isLowSurrogate(unit)) {
            return false;
        }
    }
    return true;
}

std::uint32_t readUtf32(const std::uint8_t* in, std::endian order) noexcept {
    return order == std::endian::little ? readUnit(in) | (readUnit(in + 2) << 16)
                                        : (std::uint32_t{in[0]} << 24) | (std::uint32_t{in[1]} << 16) |
                                              (std::uint32_t{in[2]} << 8) | std::uint32_t{in[3]};
}

}  // namespace

bool isUtf8(std::span<const std::uint8_t> bytes) noexcept {
    return measureUtf8(bytes).has_value();
}

std::optional<std::wstring> utf8ToWide(std::span<const std::uint8_t> bytes) {
    const std::optional<std::size_t> units = measureUtf8(bytes);
    if (!units) {
        return std::nullopt;
    }
    std::wstring text(*units, L'\0');
    wchar_t* out = text.data();
    while (!bytes.empty()) {
        if (startsWithAscii(bytes)) {
            for (std::size_t i = 0; i < asciiStep; ++i) {
                *out++ = static_cast<wchar_t>(bytes[i]);
            }
            bytes = bytes.subspan(asciiStep);
            continue;
        }
        const CodePoint next = readUtf8(bytes);
        out = writeCodePoint(next.value, out);
        bytes = bytes.subspan(next.length);
    }
    return text;
}

std::optional<std::wstring> utf16ToWide(std::span<const std::uint8_t> bytes, std::endian order) {
    if (bytes.size() % 2 != 0) {
        return std::nullopt;
    }
    std::wstring text =
        order == std::endian::little ? readUnits(bytes) : readUnits(Binary::detail::swapBytes(bytes));
    return hasPairedSurrogates(text) ? std::optional(std::move(text)) : std::nullopt;
}

std::optional<std::wstring> utf32ToWide(std::span<const std::uint8_t> bytes, std::endian order) {
    if (bytes.size() % 4 != 0) {
        return std::nullopt;
    }
    std::size_t units = 0;
    for (std::size_t i = 0; i < bytes.size(); i += 4) {
        const std::uint32_t value = readUtf32(&bytes[i], order);
        if (value > 0x10FFFF || isHighSurrogate(value) || isLowSurrogate(value)) {
            return std::nullopt;
        }
        units += unitCount(value);
    }
    std::wstring text(units, L'\0');
    wchar_t* out = text.data();
    for (std::size_t i = 0; i < bytes.size(); i += 4) {
        out = writeCodePoint(readUtf32(&bytes[i], order), out);
    }
    return text;
}

Bytes Binary::detail::swapBytes(std::span<const std::uint8_t> bytes) {
    Bytes swapped(bytes.begin(), bytes.end());
    for (std::size_t i = 0; i + 1 < swapped.size(); i += 2) {
        std::swap(swapped[i], swapped[i + 1]);
    }
    return swapped;
}

}  // namespace Corvane
