#include "core/utf8.h"

#include <array>

namespace Corvane {
namespace {

constexpr std::uint32_t replacement = 0xFFFD;
constexpr std::uint32_t lastCodePoint = 0x10FFFF;

// Takes the code point at the start of a text that is not empty.
std::uint32_t takeCodePoint(std::wstring_view& text) noexcept {
    const auto unit = static_cast<std::uint32_t>(text[0]);
    text.remove_prefix(1);
    if (detail::isHighSurrogate(unit) && !text.empty()) {
        const auto second = static_cast<std::uint32_t>(text[0]);
        if (detail::isLowSurrogate(second)) {
            text.remove_prefix(1);
            return 0x10000 + ((unit & 0x3FF) << 10) + (second & 0x3FF);
        }
    }
    const bool isFault = detail::isHighSurrogate(unit) || detail::isLowSurrogate(unit);
    return isFault || unit > lastCodePoint ? replacement : unit;
}

void append(std::string& text, std::uint32_t codePoint) {
    const auto next = [codePoint](unsigned shift) {
        return static_cast<char>(0x80 | ((codePoint >> shift) & 0x3F));
    };
    if (codePoint < 0x80)
        text += static_cast<char>(codePoint);
    else if (codePoint < 0x800)
        text += {static_cast<char>(0xC0 | (codePoint >> 6)), next(0)};
    else if (codePoint < 0x10000)
        text += {static_cast<char>(0xE0 | (codePoint >> 12)), next(6), next(0)};
    else
        text += {static_cast<char>(0xF0 | (codePoint >> 18)), next(12), next(6), next(0)};
}

}  // namespace

std::string toUtf8(std::wstring_view text) {
    std::string bytes;
    bytes.reserve(text.size());
    while (!text.empty())
        append(bytes, takeCodePoint(text));
    return bytes;
}

std::wstring fromUtf8(std::string_view text) {
    std::wstring wide;
    wide.reserve(text.size());
    std::span bytes(reinterpret_cast<const std::uint8_t*>(text.data()), text.size());
    while (!bytes.empty()) {
        const detail::CodePoint read = detail::readUtf8(bytes);
        const detail::CodePoint next = read.length != 0 ? read : detail::CodePoint{replacement, 1};
        std::array<wchar_t, 2> units{};
        wide.append(units.data(), detail::writeCodePoint(next.value, units.data()));
        bytes = bytes.subspan(next.length);
    }
    return wide;
}

}  // namespace Corvane
