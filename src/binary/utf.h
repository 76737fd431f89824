// Unicode text in bytes. Wide text is a sequence of UTF-16 code units on every platform, whatever the size of
// wchar_t.
//
// The decoders are strict: they give nothing for input that is not well-formed (The Unicode Standard,
// section 3.9), and never a replacement character for a fault.
#pragma once

#include "binary/bytes.h"

#include <bit>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>

namespace Corvane {

// Well-formed UTF-8: the shortest forms only, no surrogates, nothing above U+10FFFF.
[[nodiscard]] bool isUtf8(std::span<const std::uint8_t> bytes) noexcept;

// A byte-order mark at the start is a character like others here (U+FEFF).
[[nodiscard]] std::optional<std::wstring> utf8ToWide(std::span<const std::uint8_t> bytes);

// Nothing for an odd number of bytes and for a surrogate without its partner.
[[nodiscard]] std::optional<std::wstring> utf16ToWide(std::span<const std::uint8_t> bytes, std::endian order);

// Nothing for a number of bytes that is not a multiple of four, for surrogates and for values above 0x10FFFF.
[[nodiscard]] std::optional<std::wstring> utf32ToWide(std::span<const std::uint8_t> bytes, std::endian order);

namespace Binary::detail {

// The bytes with those of each pair exchanged: UTF-16 in the other byte order. An odd last byte stays as it
// is.
[[nodiscard]] Bytes swapBytes(std::span<const std::uint8_t> bytes);

}  // namespace Binary::detail
}  // namespace Corvane
