// Decodes anything and compares with a decoder written for being obvious; encodes it and gets it back.
#include "binary/base64.h"
#include "require.h"

#include <cstddef>
#include <string>

using namespace Corvane;

namespace {

template <typename Char>
Bytes decodeSlowly(const std::basic_string<Char>& text) {
    const std::string alphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    Bytes bytes;
    std::uint32_t bits = 0;
    std::size_t count = 0;
    for (const Char character : text) {
        const auto value = character > 0 && character < 0x80 ? alphabet.find(static_cast<char>(character))
                                                             : std::string::npos;
        if (value == std::string::npos) {
            continue;
        }
        bits = (bits << 6) | static_cast<std::uint32_t>(value);
        count = (count + 1) % 4;
        if (count != 1) {
            bytes.push_back(static_cast<std::uint8_t>(bits >> (count == 0 ? 0 : 8 - 2 * count)));
        }
    }
    return bytes;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string text(data, data + size);
    require(base64ToBin(text) == decodeSlowly(text));

    std::wstring units;
    for (std::size_t i = 0; i + 1 < size; i += 2) {
        // Mostly ASCII, at times a character whose low byte alone would be of the alphabet.
        units += static_cast<wchar_t>(data[i] | (data[i + 1] < 0xF0 ? 0 : data[i + 1] << 8));
    }
    require(base64ToBin(units) == decodeSlowly(units));

    for (std::uint32_t flags = 0; flags < 4; ++flags) {
        const Bytes bytes(data, data + size);
        const std::wstring encoded = binToBase64(bytes, flags);
        require(base64ToBin(encoded) == bytes);
        require((flags & base64NoLineBreaks) == 0 || encoded.find(L'\r') == std::wstring::npos);
    }
    return 0;
}
