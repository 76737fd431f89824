#include "binary/utf.h"

#include "core/utf8.h"

#include <cstring>
#include <string_view>
#include <type_traits>
#include <utility>

namespace Corvane {
namespace {

using detail::CodePoint;
using detail::isHighSurrogate;
using detail::isLowSurrogate;
using detail::readUtf8;
using detail::unitCount;
using detail::writeCodePoint;

constexpr std::size_t asciiStep = 8;

// Whether the text begins with eight ASCII characters, which most text does nearly everywhere.
bool startsWithAscii(std::span<const std::uint8_t> text) noexcept {
    if (text.size() < asciiStep)
        return false;
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
        if (next.length == 0)
            return std::nullopt;
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
            if (i == text.size() || !isLowSurrogate(toUnit(text[i])))
                return false;
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
    if (!units)
        return std::nullopt;
    std::wstring text(*units, L'\0');
    wchar_t* out = text.data();
    while (!bytes.empty()) {
        if (startsWithAscii(bytes)) {
            for (std::size_t i = 0; i < asciiStep; ++i)
                *out++ = static_cast<wchar_t>(bytes[i]);
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
    if (bytes.size() % 2 != 0)
        return std::nullopt;
    std::wstring text =
        order == std::endian::little ? readUnits(bytes) : readUnits(Binary::detail::swapBytes(bytes));
    return hasPairedSurrogates(text) ? std::optional(std::move(text)) : std::nullopt;
}

std::optional<std::wstring> utf32ToWide(std::span<const std::uint8_t> bytes, std::endian order) {
    if (bytes.size() % 4 != 0)
        return std::nullopt;
    std::size_t units = 0;
    for (std::size_t i = 0; i < bytes.size(); i += 4) {
        const std::uint32_t value = readUtf32(&bytes[i], order);
        if (value > 0x10FFFF || isHighSurrogate(value) || isLowSurrogate(value))
            return std::nullopt;
        units += unitCount(value);
    }
    std::wstring text(units, L'\0');
    wchar_t* out = text.data();
    for (std::size_t i = 0; i < bytes.size(); i += 4)
        out = writeCodePoint(readUtf32(&bytes[i], order), out);
    return text;
}

Bytes Binary::detail::swapBytes(std::span<const std::uint8_t> bytes) {
    Bytes swapped(bytes.begin(), bytes.end());
    for (std::size_t i = 0; i + 1 < swapped.size(); i += 2)
        std::swap(swapped[i], swapped[i + 1]);
    return swapped;
}

}  // namespace Corvane
