// Hexadecimal text: two digits per byte, high nibble first. Wide text is a sequence of UTF-16 code units.
#pragma once

#include "binary/bytes.h"

#include <cstdint>
#include <span>
#include <string>
#include <string_view>

namespace Corvane {

// Writes two upper-case digits per byte and returns the end of the text; the caller provides the room, and no
// terminator is written.
char* encodeHex(std::span<const std::uint8_t> bytes, char* out);
wchar_t* encodeHex(std::span<const std::uint8_t> bytes, wchar_t* out);

// The bytes as upper-case hexadecimal text without separators.
[[nodiscard]] std::wstring binToHex(std::span<const std::uint8_t> bytes);

// The bytes of a text of digit pairs, of either case, with nothing between them. Only the low eight bits of
// each code unit count, so U+0130 is taken for "0". Throws `Exception`: E_HEX_STRING at the first pair that
// is not two digits, E_HEX_STRING_SIZE where the pairs are good as far as a last single character, whatever
// it is.
[[nodiscard]] Bytes hexToBin(std::string_view text);
[[nodiscard]] Bytes hexToBin(std::wstring_view text);

}  // namespace Corvane
