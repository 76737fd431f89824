// Base64 text (RFC 4648, section 4). Wide text is a sequence of UTF-16 code units.
#pragma once

#include "binary/bytes.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>

namespace Corvane {

// Flag of the encoder: a last group of one or two bytes is not filled up with "=".
inline constexpr std::uint32_t base64NoPadding = 1;
// Flag of the encoder: the text is one line.
inline constexpr std::uint32_t base64NoLineBreaks = 2;

// The exact number of characters of the Base64 text of `size` bytes. Throws `Exception` with
// E_STRING_MAX_SIZE for a negative size, with E_BINARY_MAX_SIZE where size times 4 does not fit in 32 bits.
[[nodiscard]] std::size_t getBinToBase64RequiredSize(std::int64_t size, std::uint32_t flags);

// Writes the Base64 text of the bytes and returns its end. Lines hold 76 characters, and every full line of
// whole groups ends in CR LF, so the text of 57 bytes ends in a line break. The caller provides room for
// `getBinToBase64RequiredSize` characters; no terminator is written.
char* encodeBase64(std::span<const std::uint8_t> bytes, std::uint32_t flags, char* out);
wchar_t* encodeBase64(std::span<const std::uint8_t> bytes, std::uint32_t flags, wchar_t* out);

// The Base64 text of the bytes, laid out as by `encodeBase64`; throws like `getBinToBase64RequiredSize`.
[[nodiscard]] std::wstring binToBase64(std::span<const std::uint8_t> bytes, std::uint32_t flags);

// Decodes Base64 leniently: a character outside the alphabet ("=" included) is skipped wherever it stands,
// and nothing is rejected. Four characters give three bytes; three, two or one left at the end give two, one
// or none.
[[nodiscard]] Bytes base64ToBin(std::string_view text);
[[nodiscard]] Bytes base64ToBin(std::wstring_view text);

}  // namespace Corvane
